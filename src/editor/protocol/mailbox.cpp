#include "editor/protocol/mailbox.h"

#include <utility>

namespace Vesk::editor {

using Json = nlohmann::json;

void Mailbox::put(const std::string& body) {
    Received received;
    received.message = Json::parse(body, nullptr, false);
    received.broken = received.message.is_discarded();
    const std::lock_guard lock(mutex_);
    if (!received.broken && received.message.is_object() &&
        received.message.value("method", Json()) == "$/cancelRequest") {
        const Json parameters = received.message.value("params", Json::object());
        cancel(parameters.is_object() ? parameters.value("id", Json()) : Json());
        return;
    }
    waiting_.push_back(std::move(received));
    changed_.notify_one();
}

void Mailbox::cancel(const Json& id) {
    for (Received& each : waiting_) {
        const bool isRequest = each.message.is_object() && each.message.contains("method");
        if (isRequest && !id.is_null() && each.message.value("id", Json()) == id) {
            each.cancelled = true;
        }
    }
}

void Mailbox::close() {
    const std::lock_guard lock(mutex_);
    closed_ = true;
    changed_.notify_one();
}

Mailbox::Outcome Mailbox::take(Received& received, std::chrono::milliseconds patience) {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, patience, [this] { return !waiting_.empty() || closed_; });
    if (waiting_.empty()) {
        return closed_ ? Outcome::End : Outcome::Nothing;
    }
    received = std::move(waiting_.front());
    waiting_.pop_front();
    return Outcome::Message;
}

}  // namespace Vesk::editor
