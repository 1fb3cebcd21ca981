// The answers to requests about documents, in the protocol's form.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "editor/diagnostic.h"
#include "editor/protocol/state.h"

namespace Vesk::editor {

/// Throws RequestError, VeskException for what cannot be done, and the library's exceptions for
/// parameters that are not as the protocol has them.
struct RequestHandler {
    std::string_view method;
    std::string (*answer)(State& state, const Json& params);  ///< text of JSON
};

std::span<const RequestHandler> requestHandlers() noexcept;

/// `diagnostics` of a publication.
Json diagnosticsJson(const State& state, const Document& document,
                     const std::vector<Diagnostic>& diagnostics);

}  // namespace Vesk::editor
