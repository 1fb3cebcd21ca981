// What the language server knows, and how places go into its messages and come out of them.
#pragma once

#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "base/exception.h"
#include "editor/evaluation.h"
#include "editor/features/spot.h"
#include "editor/workspace.h"

namespace Vesk::editor {

using Json = nlohmann::json;

/// On one line. JSON is UTF-8: bytes that are not are replaced.
std::string textOf(const Json& json);

/// An answer to a request that is an error.
class RequestError : public VeskException {
  public:
    RequestError(int code, std::string message) : VeskException(std::move(message)), code_(code) {}

    int code() const noexcept { return code_; }

  private:
    int code_;
};

namespace error_code {
inline constexpr int kParse = -32700;
inline constexpr int kInvalidRequest = -32600;
inline constexpr int kMethodNotFound = -32601;
inline constexpr int kInvalidParams = -32602;
inline constexpr int kInternal = -32603;
inline constexpr int kNotInitialized = -32002;
inline constexpr int kCancelled = -32800;
inline constexpr int kFailed = -32803;
}  // namespace error_code

struct State {
    Workspace workspace;
    Evaluations evaluations;
    ColumnUnit unit = ColumnUnit::Utf16;
    std::vector<std::filesystem::path> roots;
    std::map<std::string, std::string> uris;  ///< as the client writes them, by path

    Json positionOf(const Document& document, std::uint32_t byte) const;
    Json rangeOf(const Document& document, TextSpan span) const;
    TextSpan spanOf(const Document& document, const Json& range) const;
    std::string uriOfDocument(const Document& document) const;

    /// The document of `params.textDocument`. Throws RequestError for one that cannot be read.
    const Document& documentOf(const Json& params);

    /// That and `params.position`.
    Cursor cursorOf(const Json& params);

    /// Loads the projects of the roots and of all open documents, for what looks everywhere.
    void loadProjects();
};

/// The path of a URI. Throws RequestError for one that names no file.
std::filesystem::path pathOf(const Json& uri);

}  // namespace Vesk::editor
