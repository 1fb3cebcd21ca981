#include "editor/protocol/server.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <exception>
#include <memory>
#include <thread>
#include <utility>

#include "editor/checks.h"
#include "editor/features/semantic_tokens.h"
#include "editor/protocol/answers.h"
#include "platform/files.h"

namespace Vesk::editor {
namespace {

constexpr const char* kSelectProfile = "vesk.selectProfile";

// Typing goes on: what a change means is worked out in the first pause.
constexpr std::chrono::milliseconds kPause{15};
constexpr std::chrono::milliseconds kLongPause{1000};
constexpr std::chrono::milliseconds kForever{3'600'000};

bool offersUtf8(const Json& params) {
    const Json encodings =
        params.value("/capabilities/general/positionEncodings"_json_pointer, Json::array());
    return std::ranges::find(encodings, Json("utf-8")) != encodings.end();
}

Json capabilities(bool utf8) {
    return {{"positionEncoding", utf8 ? "utf-8" : "utf-16"},
            {"textDocumentSync", {{"openClose", true}, {"change", 2}, {"save", true}}},
            {"completionProvider",
             {{"triggerCharacters", Json::array({".", "{", "/", ":", "\"", "@"})}}},
            {"hoverProvider", true},
            {"definitionProvider", true},
            {"referencesProvider", true},
            {"documentHighlightProvider", true},
            {"renameProvider", {{"prepareProvider", true}}},
            {"documentSymbolProvider", true},
            {"workspaceSymbolProvider", true},
            {"foldingRangeProvider", true},
            {"semanticTokensProvider",
             {{"legend", {{"tokenTypes", kTokenMeanings}, {"tokenModifiers", Json::array()}}},
              {"full", true}}},
            {"documentFormattingProvider", true},
            {"codeActionProvider", {{"codeActionKinds", Json::array({"quickfix"})}}},
            {"codeLensProvider", {{"resolveProvider", false}}},
            {"executeCommandProvider", {{"commands", Json::array({kSelectProfile})}}}};
}

Json objectOr(const Json& params) {
    return params.is_object() ? params : Json::object();
}

}  // namespace

LanguageServer::LanguageServer(Send send, std::string version)
    : send_(std::move(send)), version_(std::move(version)) {}

// --- Messages ------------------------------------------------------------------------------------

void LanguageServer::fail(const Json& id, int code, const std::string& message) {
    send({{"jsonrpc", "2.0"}, {"id", id}, {"error", {{"code", code}, {"message", message}}}});
}

void LanguageServer::handle(const Received& received) {
    const Json& message = received.message;
    if (received.broken) {
        fail(nullptr, error_code::kParse, "This is no JSON.");
        return;
    }
    const bool isObject = message.is_object();
    const Json id = isObject ? message.value("id", Json()) : Json();
    if (isObject && !message.contains("method") &&
        (message.contains("result") || message.contains("error"))) {
        return;  // an answer to something that we asked
    }
    if (!isObject || !message.contains("method") || !message["method"].is_string()) {
        fail(id, error_code::kInvalidRequest, "A request has a method.");
        return;
    }
    const auto method = message["method"].get<std::string>();
    const Json params = objectOr(message.value("params", Json::object()));
    if (!message.contains("id")) {
        notify(method, params);
    } else if (received.cancelled) {
        fail(id, error_code::kCancelled, "The request was cancelled.");
    } else {
        request(id, method, params);
    }
}

void LanguageServer::request(const Json& id, const std::string& method, const Json& params) {
    try {
        const std::string result = answer(method, params);
        send_(R"({"jsonrpc":"2.0","id":)" + textOf(id) + R"(,"result":)" + result + "}");
    } catch (const RequestError& error) {
        fail(id, error.code(), error.text());
    } catch (const VeskException& error) {
        fail(id, error_code::kFailed, error.report());
    } catch (const Json::exception& error) {
        fail(id, error_code::kInvalidParams, error.what());
    } catch (const std::exception& error) {
        fail(id, error_code::kInternal, error.what());
    }
}

std::string LanguageServer::answer(const std::string& method, const Json& params) {
    if (method == "initialize") {
        return textOf(initialize(params));
    }
    if (phase_ == Phase::New) {
        throw RequestError(error_code::kNotInitialized, "The first request is 'initialize'.");
    }
    if (phase_ == Phase::ShutDown) {
        throw RequestError(error_code::kInvalidRequest, "The server is shut down.");
    }
    if (method == "shutdown") {
        phase_ = Phase::ShutDown;
        return textOf(Json());
    }
    if (method == "workspace/executeCommand") {
        return textOf(execute(params));
    }
    for (const RequestHandler& handler : requestHandlers()) {
        if (handler.method == method) {
            return handler.answer(state_, params);
        }
    }
    throw RequestError(error_code::kMethodNotFound, "There is no method '" + method + "'.");
}

LanguageServer::Notification LanguageServer::notificationNamed(const std::string& method) {
    static const std::map<std::string, Notification> known = {
        {"textDocument/didOpen", &LanguageServer::didOpen},
        {"textDocument/didChange", &LanguageServer::didChange},
        {"textDocument/didClose", &LanguageServer::didClose},
        {"workspace/didChangeWatchedFiles", &LanguageServer::didChangeFiles},
        {"textDocument/didSave", &LanguageServer::didChangeFiles},
        {"workspace/didChangeConfiguration", &LanguageServer::didChangeConfiguration},
    };
    const auto found = known.find(method);
    return found == known.end() ? nullptr : found->second;
}

void LanguageServer::notify(const std::string& method, const Json& params) {
    if (method == "exit") {
        finished_ = true;
        return;
    }
    const Notification handler = notificationNamed(method);
    if (phase_ != Phase::Running || handler == nullptr) {
        return;  // nobody waits for an answer, not even for an error
    }
    try {
        (this->*handler)(params);
    } catch (const VeskException& error) {
        send({{"jsonrpc", "2.0"},
              {"method", "window/logMessage"},
              {"params", {{"type", 1}, {"message", method + ": " + error.report()}}}});
    } catch (const std::exception& error) {
        send({{"jsonrpc", "2.0"},
              {"method", "window/logMessage"},
              {"params", {{"type", 1}, {"message", method + ": " + error.what()}}}});
    }
}

// --- The session ---------------------------------------------------------------------------------

Json LanguageServer::initialize(const Json& params) {
    if (phase_ != Phase::New) {
        throw RequestError(error_code::kInvalidRequest, "'initialize' comes once.");
    }
    const bool utf8 = offersUtf8(params);
    state_.unit = utf8 ? ColumnUnit::Utf8 : ColumnUnit::Utf16;
    const Json folders = params.value("workspaceFolders", Json());
    if (folders.is_array()) {
        for (const Json& folder : folders) {
            state_.roots.push_back(pathOf(folder.at("uri")));
        }
    } else if (const Json root = params.value("rootUri", Json()); root.is_string()) {
        state_.roots.push_back(pathOf(root));
    }
    takeSettings(params.value("initializationOptions", Json()));
    phase_ = Phase::Running;
    return {{"capabilities", capabilities(utf8)},
            {"serverInfo", {{"name", "vesk"}, {"version", version_}}}};
}

void LanguageServer::takeSettings(const Json& settings) {
    if (settings.is_object() && settings.contains("profile") && settings["profile"].is_string()) {
        state_.evaluations.selectProfile(settings["profile"].get<std::string>());
        changed_ = true;
    }
}

void LanguageServer::didChangeConfiguration(const Json& params) {
    const Json settings = params.value("settings", Json());
    takeSettings(settings.is_object() ? settings.value("vesk", settings) : settings);
}

Json LanguageServer::execute(const Json& params) {
    const auto command = params.at("command").get<std::string>();
    if (command != kSelectProfile) {
        throw RequestError(error_code::kInvalidParams, "There is no command '" + command + "'.");
    }
    takeSettings({{"profile", params.at("arguments").at(0)}});
    return {};
}

// --- Texts ---------------------------------------------------------------------------------------

void LanguageServer::didOpen(const Json& params) {
    const Json& item = params.at("textDocument");
    const auto path = pathOf(item.at("uri"));
    const Document& document = state_.workspace.open(path, item.at("text").get<std::string>());
    state_.uris[platform::pathToUtf8(document.path())] = item.at("uri").get<std::string>();
    changed_ = true;
}

void LanguageServer::didChange(const Json& params) {
    Document* const document = state_.workspace.opened(pathOf(params.at("textDocument").at("uri")));
    if (document == nullptr) {
        throw RequestError(error_code::kInvalidParams, "The document is not open.");
    }
    for (const Json& change : params.at("contentChanges")) {
        const auto& text = change.at("text").get_ref<const std::string&>();
        if (change.contains("range")) {
            document->replace(state_.spanOf(*document, change["range"]), text);
        } else {
            document->replaceAll(text);
        }
    }
    state_.workspace.refresh();
    changed_ = true;
}

void LanguageServer::didClose(const Json& params) {
    const Json& uri = params.at("textDocument").at("uri");
    state_.workspace.close(pathOf(uri));
    if (published_.erase(uri.get<std::string>()) > 0) {
        send({{"jsonrpc", "2.0"},
              {"method", "textDocument/publishDiagnostics"},
              {"params", {{"uri", uri}, {"diagnostics", Json::array()}}}});
    }
    changed_ = true;
}

void LanguageServer::didChangeFiles(const Json& /*params*/) {
    state_.workspace.refresh();
    changed_ = true;
}

void LanguageServer::publish(const Document& document) {
    const std::string uri = state_.uriOfDocument(document);
    Json diagnostics =
        diagnosticsJson(state_, document, diagnose(state_.workspace, state_.evaluations, document));
    const auto known = published_.find(uri);
    if (known != published_.end() && known->second == diagnostics) {
        return;
    }
    published_[uri] = diagnostics;
    send({{"jsonrpc", "2.0"},
          {"method", "textDocument/publishDiagnostics"},
          {"params", {{"uri", uri}, {"diagnostics", std::move(diagnostics)}}}});
}

std::chrono::milliseconds LanguageServer::patience() const noexcept {
    return changed_ ? kPause : doubtful_ ? kLongPause : kForever;
}

void LanguageServer::settle() {
    doubtful_ = false;
    for (const Document* document : state_.workspace.openDocuments()) {
        changed_ = state_.workspace.opened(document->path())->settle() || changed_;
    }
    state_.workspace.refresh();
}

void LanguageServer::idle() {
    if (!changed_ && doubtful_) {
        settle();
    } else if (changed_) {
        doubtful_ = true;
    }
    if (std::exchange(changed_, false)) {
        for (const Document* document : state_.workspace.openDocuments()) {
            publish(*document);
        }
    }
}

int serve(const ByteSource& source, const std::function<void(std::string_view)>& write,
          const std::string& version) {
    const auto mailbox = std::make_shared<Mailbox>();
    // It may wait for input that never comes, so the process ends without it.
    std::thread([mailbox, source] {
        MessageReader messages(source);
        while (const auto body = messages.next()) {
            mailbox->put(*body);
        }
        mailbox->close();
    }).detach();
    LanguageServer server([&write](std::string_view message) { write(framed(message)); }, version);
    Received received;
    while (!server.finished()) {
        const Mailbox::Outcome outcome = mailbox->take(received, server.patience());
        if (outcome == Mailbox::Outcome::End) {
            break;
        }
        if (outcome == Mailbox::Outcome::Message) {
            server.handle(received);
        } else {
            server.idle();
        }
    }
    return server.status();
}

}  // namespace Vesk::editor
