// The language server: messages in, messages out.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "editor/protocol/mailbox.h"
#include "editor/protocol/message_stream.h"
#include "editor/protocol/state.h"

namespace Vesk::editor {

class LanguageServer {
  public:
    using Send = std::function<void(std::string_view message)>;

    /// `version` is vesk's own.
    LanguageServer(Send send, std::string version);

    /// Answers a message of the client.
    void handle(const Received& received);

    /// How long to wait for a message before `idle` is called.
    std::chrono::milliseconds patience() const noexcept;

    /// Publishes what has come of the changes; after a longer pause looks again at what seemed not
    /// to be closed.
    void idle();

    bool finished() const noexcept { return finished_; }
    int status() const noexcept { return phase_ == Phase::ShutDown ? 0 : 1; }

  private:
    enum class Phase { New, Running, ShutDown };
    using Notification = void (LanguageServer::*)(const Json& params);

    void send(const Json& message) const { send_(textOf(message)); }
    void request(const Json& id, const std::string& method, const Json& params);
    void notify(const std::string& method, const Json& params);
    std::string answer(const std::string& method, const Json& params);
    Json initialize(const Json& params);
    Json execute(const Json& params);
    void fail(const Json& id, int code, const std::string& message);
    void publish(const Document& document);
    void settle();

    void didOpen(const Json& params);
    void didChange(const Json& params);
    void didClose(const Json& params);
    void didChangeFiles(const Json& params);
    void didChangeConfiguration(const Json& params);
    void takeSettings(const Json& settings);
    static Notification notificationNamed(const std::string& method);

    Send send_;
    std::string version_;
    State state_;
    Phase phase_ = Phase::New;
    bool finished_ = false;
    bool changed_ = false;                   ///< since the last publication
    bool doubtful_ = false;                  ///< since documents were settled
    std::map<std::string, Json> published_;  ///< what the client shows, by URI
};

/// Serves one client until it ends or says so. `source` is read on a thread of its own. Returns the
/// exit status: 0 after an orderly shutdown.
int serve(const ByteSource& source, const std::function<void(std::string_view)>& write,
          const std::string& version);

}  // namespace Vesk::editor
