// The threads that wait for commands.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace Vesk {

/// Work is handed out on one thread, the owner's, and taken back there. Threads are started as they
/// are needed, and end with this.
class Workers {
  public:
    struct Finished {
        std::size_t number;
        bool succeeded;
    };

    explicit Workers(unsigned most) : most_(most) {}
    ~Workers();
    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;

    /// Begins work, which throws nothing, under a number. Where the system has no thread for it at
    /// all, it is done here and now.
    void begin(std::size_t number, std::function<bool()> work);

    /// What has been finished since the last call, in that order. Waits, at most so long, until
    /// there is something.
    std::vector<Finished> take(std::chrono::milliseconds wait);

  private:
    struct Task {
        std::size_t number = 0;
        std::function<bool()> work;
    };

    bool startThread();
    void serve();

    const unsigned most_;
    std::mutex mutex_;
    std::condition_variable given_;
    std::condition_variable finishedOne_;
    std::deque<Task> tasks_;
    std::vector<Finished> finished_;
    std::size_t waiting_ = 0;  ///< threads without a task
    bool ending_ = false;
    std::vector<std::thread> threads_;
};

}  // namespace Vesk
