// Something that is done at a point of time, unless it is called off before.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace Vesk::platform {

class Alarm {
  public:
    /// `action` is done on a thread of its own and throws nothing. Throws std::system_error when
    /// the system has no more threads.
    Alarm(std::chrono::steady_clock::time_point when, std::function<void()> action);
    ~Alarm() { stop(); }
    Alarm(const Alarm&) = delete;
    Alarm& operator=(const Alarm&) = delete;

    /// Calls it off; after that nothing is done any more. Whether it had been done.
    bool stop();

  private:
    void wait(std::chrono::steady_clock::time_point when);

    std::function<void()> action_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool stopped_ = false;
    bool done_ = false;
    std::thread thread_;
};

}  // namespace Vesk::platform
