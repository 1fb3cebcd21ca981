#include "platform/alarm.h"

#include <utility>

namespace Vesk::platform {

Alarm::Alarm(std::chrono::steady_clock::time_point when, std::function<void()> action)
    : action_(std::move(action)), thread_([this, when] { wait(when); }) {}

void Alarm::wait(std::chrono::steady_clock::time_point when) {
    std::unique_lock lock(mutex_);
    if (!changed_.wait_until(lock, when, [this] { return stopped_; })) {
        done_ = true;
        action_();
    }
}

bool Alarm::stop() {
    {
        const std::lock_guard lock(mutex_);
        stopped_ = true;
    }
    changed_.notify_all();
    if (thread_.joinable()) {
        thread_.join();
    }
    return done_;
}

}  // namespace Vesk::platform
