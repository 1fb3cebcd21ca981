#include "schedule/workers.h"

#include <system_error>
#include <utility>

namespace Vesk {

Workers::~Workers() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    given_.notify_all();
    for (std::thread& thread : threads_) {
        thread.join();
    }
}

bool Workers::startThread() {
    if (threads_.size() >= most_) {
        return false;
    }
    try {
        threads_.emplace_back([this] { serve(); });
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

void Workers::begin(std::size_t number, std::function<bool()> work) {
    std::unique_lock lock(mutex_);
    if (tasks_.size() >= waiting_ && !startThread() && threads_.empty()) {
        lock.unlock();
        const bool succeeded = work();
        lock.lock();
        finished_.push_back({number, succeeded});
        return;
    }
    tasks_.push_back({number, std::move(work)});
    lock.unlock();
    given_.notify_one();
}

void Workers::serve() {
    std::unique_lock lock(mutex_);
    for (;;) {
        ++waiting_;
        given_.wait(lock, [this] { return !tasks_.empty() || ending_; });
        --waiting_;
        if (tasks_.empty()) {
            return;
        }
        Task task = std::move(tasks_.front());
        tasks_.pop_front();
        lock.unlock();
        const bool succeeded = task.work();
        task.work = nullptr;
        lock.lock();
        finished_.push_back({task.number, succeeded});
        finishedOne_.notify_one();
    }
}

std::vector<Workers::Finished> Workers::take(std::chrono::milliseconds wait) {
    std::unique_lock lock(mutex_);
    if (wait.count() > 0) {
        finishedOne_.wait_for(lock, wait, [this] { return !finished_.empty(); });
    }
    return std::exchange(finished_, {});
}

}  // namespace Vesk
