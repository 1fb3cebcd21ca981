#include "editor/protocol/state.h"

#include "editor/uri.h"
#include "platform/files.h"
#include "project/load_project.h"

namespace Vesk::editor {

std::string textOf(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::filesystem::path pathOf(const Json& uri) {
    const auto path = pathOfUri(uri.get<std::string>());
    if (!path) {
        throw RequestError(error_code::kInvalidParams,
                           "'" + uri.get<std::string>() + "' is no URI of a file.");
    }
    return path->lexically_normal();
}

Json State::positionOf(const Document& document, std::uint32_t byte) const {
    const LinePlace place = document.lines().placeOf(document.text(), byte, unit);
    return {{"line", place.line}, {"character", place.column}};
}

Json State::rangeOf(const Document& document, TextSpan span) const {
    return {{"start", positionOf(document, span.begin)}, {"end", positionOf(document, span.end)}};
}

TextSpan State::spanOf(const Document& document, const Json& range) const {
    const auto byte = [&](const Json& position) {
        const LinePlace place{position.at("line").get<std::uint32_t>(),
                              position.at("character").get<std::uint32_t>()};
        return document.lines().byteOf(document.text(), place, unit);
    };
    return {byte(range.at("start")), byte(range.at("end"))};
}

std::string State::uriOfDocument(const Document& document) const {
    const auto found = uris.find(platform::pathToUtf8(document.path()));
    return found == uris.end() ? uriOf(document.path()) : found->second;
}

const Document& State::documentOf(const Json& params) {
    const Json& uri = params.at("textDocument").at("uri");
    const Document* const document = workspace.document(pathOf(uri));
    if (document == nullptr) {
        throw RequestError(error_code::kFailed, "'" + uri.get<std::string>() + "' cannot be read.");
    }
    return *document;
}

Cursor State::cursorOf(const Json& params) {
    const Document& document = documentOf(params);
    const Json& position = params.at("position");
    const TextSpan span = spanOf(document, {{"start", position}, {"end", position}});
    return {workspace, document, span.begin};
}

void State::loadProjects() {
    for (const Document* document : workspace.openDocuments()) {
        workspace.projectOf(*document);
    }
    for (const std::filesystem::path& root : roots) {
        if (const auto project = findProjectFile(root)) {
            workspace.projectAt(*project);
        } else if (const Document* file = workspace.document(root / kUnitFileName)) {
            workspace.projectOf(*file);
        }
    }
}

}  // namespace Vesk::editor
