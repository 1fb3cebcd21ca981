// Messages that have come in and wait for their turn. One thread puts, another takes.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>

namespace Vesk::editor {

struct Received {
    nlohmann::json message;
    bool broken = false;     ///< the body was no JSON
    bool cancelled = false;  ///< the client wants no answer any more
};

class Mailbox {
  public:
    enum class Outcome { Message, Nothing, End };

    /// Takes a body. A cancellation marks the request that it names, if that still waits.
    void put(const std::string& body);

    /// No more will come.
    void close();

    /// The oldest message; `Nothing` when none has come for so long, `End` behind the last one.
    Outcome take(Received& received, std::chrono::milliseconds patience);

  private:
    void cancel(const nlohmann::json& id);

    std::mutex mutex_;  ///< guards what follows
    std::condition_variable changed_;
    std::deque<Received> waiting_;
    bool closed_ = false;
};

}  // namespace Vesk::editor
