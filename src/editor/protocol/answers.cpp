#include "editor/protocol/answers.h"

#include <algorithm>

#include "base/text.h"
#include "editor/checks.h"
#include "editor/features/completion.h"
#include "editor/features/entity.h"
#include "editor/features/hover.h"
#include "editor/features/outline.h"
#include "editor/features/rename.h"
#include "editor/features/semantic_tokens.h"
#include "editor/format.h"
#include "editor/protocol/long_answers.h"
#include "editor/uri.h"
#include "platform/files.h"

namespace Vesk::editor {
namespace {

Json locationOf(const State& state, const Document& document, TextSpan span) {
    return {{"uri", state.uriOfDocument(document)}, {"range", state.rangeOf(document, span)}};
}

Json markdown(const std::string& text) {
    return {{"kind", "markdown"}, {"value", text}};
}

Json editsJson(const State& state, const Document& document, const std::vector<Edit>& edits) {
    Json json = Json::array();
    for (const Edit& edit : edits) {
        json.push_back({{"range", state.rangeOf(document, edit.span)}, {"newText", edit.text}});
    }
    return json;
}

// --- Names ---

std::vector<Occurrence> occurrencesAt(State& state, const Json& params) {
    const Cursor cursor = state.cursorOf(params);
    state.loadProjects();
    const Entity entity = entityAt(cursor, spotAt(cursor.document, cursor.place));
    return occurrencesOf(state.workspace, entity);
}

Json startOf(const State& state, const std::filesystem::path& file) {
    const Json start = {{"line", 0}, {"character", 0}};
    const auto known = state.uris.find(platform::pathToUtf8(file));
    return Json::array({{{"uri", known == state.uris.end() ? uriOf(file) : known->second},
                         {"range", {{"start", start}, {"end", start}}}}});
}

Json definition(State& state, const Json& params) {
    const Cursor cursor = state.cursorOf(params);
    const Entity entity = entityAt(cursor, spotAt(cursor.document, cursor.place));
    if (entity.kind == EntityKind::File) {
        return platform::isFile(entity.file) ? startOf(state, entity.file.lexically_normal())
                                             : Json();
    }
    if (entity.kind == EntityKind::Project && entity.project->file != nullptr) {
        return startOf(state, entity.project->file->path());
    }
    Json locations = Json::array();
    for (const Occurrence& occurrence : occurrencesAt(state, params)) {
        if (occurrence.definition) {
            locations.push_back(locationOf(state, *occurrence.document, occurrence.span));
        }
    }
    return locations;
}

Json references(State& state, const Json& params) {
    const bool all = params.value("context", Json::object()).value("includeDeclaration", true);
    Json locations = Json::array();
    for (const Occurrence& occurrence : occurrencesAt(state, params)) {
        if (all || !occurrence.definition) {
            locations.push_back(locationOf(state, *occurrence.document, occurrence.span));
        }
    }
    return locations;
}

Json highlights(State& state, const Json& params) {
    constexpr int kRead = 2;
    constexpr int kWrite = 3;
    const Document& document = state.documentOf(params);
    Json ranges = Json::array();
    for (const Occurrence& occurrence : occurrencesAt(state, params)) {
        if (occurrence.document == &document) {
            ranges.push_back({{"range", state.rangeOf(document, occurrence.span)},
                              {"kind", occurrence.definition ? kWrite : kRead}});
        }
    }
    return ranges;
}

Json prepareRename(State& state, const Json& params) {
    const Cursor cursor = state.cursorOf(params);
    return state.rangeOf(cursor.document, renamedSpan(cursor));
}

Json renameAll(State& state, const Json& params) {
    const Cursor cursor = state.cursorOf(params);
    state.loadProjects();
    Json changes = Json::object();
    for (const auto& [document, edits] : rename(cursor, params.at("newName").get<std::string>())) {
        changes[state.uriOfDocument(*document)] = editsJson(state, *document, edits);
    }
    return {{"changes", std::move(changes)}};
}

Json hover(State& state, const Json& params) {
    const Cursor cursor = state.cursorOf(params);
    const Hover told = hoverAt(cursor, state.evaluations);
    if (told.markdown.empty()) {
        return {};
    }
    return {{"contents", markdown(told.markdown)},
            {"range", state.rangeOf(cursor.document, told.span)}};
}

// --- Completion ---

int itemKind(ProposalKind kind) {
    switch (kind) {
        case ProposalKind::Target:
            return 3;  // function
        case ProposalKind::Unit:
        case ProposalKind::Project:
            return 9;  // module
        case ProposalKind::Profile:
        case ProposalKind::Value:
            return 12;
        case ProposalKind::Variable:
            return 6;
        case ProposalKind::Output:
            return 5;  // field
        case ProposalKind::Keyword:
            return 14;
        case ProposalKind::File:
            return 17;
        case ProposalKind::Directory:
            return 19;
    }
    return 1;
}

Json completion(State& state, const Json& params) {
    const Cursor cursor = state.cursorOf(params);
    const Proposals proposals = proposalsAt(cursor, state.evaluations);
    const Json range = state.rangeOf(cursor.document, proposals.replaced);
    Json items = Json::array();
    for (const Proposal& each : proposals.items) {
        Json item = {{"label", each.label},
                     {"kind", itemKind(each.kind)},
                     {"textEdit",
                      {{"range", range}, {"newText", each.text.empty() ? each.label : each.text}}}};
        if (!each.detail.empty()) {
            item["detail"] = each.detail;
        }
        if (!each.documentation.empty()) {
            item["documentation"] = markdown(each.documentation);
        }
        items.push_back(std::move(item));
    }
    return items;
}

// --- Shapes ---

Json workspaceSymbols(State& state, const Json& params) {
    state.loadProjects();
    Json symbols = Json::array();
    for (const FoundTarget& found :
         targetsLike(state.workspace, params.at("query").get<std::string>())) {
        symbols.push_back(
            {{"name", found.place.block->name.text},
             {"kind", symbolKind(OutlineKind::Target)},
             {"containerName", found.project + "/" + found.unit},
             {"location", locationOf(state, *found.place.document, found.place.nameSpan())}});
    }
    return symbols;
}

Json folding(State& state, const Json& params) {
    Json ranges = Json::array();
    for (const Fold& fold : foldsOf(state.documentOf(params))) {
        ranges.push_back({{"startLine", fold.firstLine},
                          {"endLine", fold.lastLine - (fold.comment ? 0 : 1)},
                          {"kind", fold.comment ? "comment" : "region"}});
    }
    std::erase_if(ranges.get_ref<Json::array_t&>(),
                  [](const Json& each) { return each["startLine"] >= each["endLine"]; });
    return ranges;
}

/// Numbers relative to the token before, as the protocol has them; a token is of one line there.
class TokenNumbers {
  public:
    TokenNumbers(const Document& document, ColumnUnit unit) : document_(document), unit_(unit) {}

    void add(const SemanticToken& token) {
        const LineIndex& lines = document_.lines();
        const std::string& text = document_.text();
        const std::uint32_t last = lines.lineOf(token.span.end);
        for (std::uint32_t line = lines.lineOf(token.span.begin); line <= last; ++line) {
            const TextSpan all = lines.spanOf(text, line);
            const TextSpan part{std::max(all.begin, token.span.begin),
                                std::min(all.end, token.span.end)};
            if (part.begin < part.end) {
                add(lines.placeOf(text, part.begin, unit_), lines.placeOf(text, part.end, unit_),
                    token.meaning);
            }
        }
    }

    Json take() { return {{"data", std::move(numbers_)}}; }

  private:
    void add(LinePlace begin, LinePlace end, TokenMeaning meaning) {
        const std::uint32_t columns =
            begin.line == before_.line ? begin.column - before_.column : begin.column;
        for (const std::uint32_t number :
             {begin.line - before_.line, columns, end.column - begin.column,
              static_cast<std::uint32_t>(meaning), std::uint32_t{0}}) {
            numbers_.push_back(number);
        }
        before_ = begin;
    }

    const Document& document_;
    ColumnUnit unit_;
    std::vector<std::uint32_t> numbers_;
    LinePlace before_;
};

Json tokens(State& state, const Json& params) {
    const Document& document = state.documentOf(params);
    TokenNumbers numbers(document, state.unit);
    for (const SemanticToken& token : semanticTokens(document)) {
        numbers.add(token);
    }
    return numbers.take();
}

// --- Changes ---

/// One edit, of what lies between what both texts begin and end with.
Edit difference(const std::string& before, const std::string& after) {
    const auto isInside = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80; };
    const std::size_t least = std::min(before.size(), after.size());
    std::size_t front = 0;
    while (front < least && before[front] == after[front]) {
        ++front;
    }
    while (front > 0 && front < before.size() && isInside(before[front])) {
        --front;
    }
    std::size_t back = 0;
    while (back < least - front &&
           before[before.size() - back - 1] == after[after.size() - back - 1]) {
        ++back;
    }
    while (back > 0 && isInside(before[before.size() - back])) {
        --back;
    }
    return {{static_cast<std::uint32_t>(front), static_cast<std::uint32_t>(before.size() - back)},
            after.substr(front, after.size() - back - front)};
}

Json formatting(State& state, const Json& params) {
    const Document& document = state.documentOf(params);
    const Formatted formatted = formatText(document.text(), document.kind());
    if (!formatted.errors.empty()) {
        throw RequestError(error_code::kFailed, "A text with syntax errors cannot be laid out.");
    }
    if (formatted.text == document.text()) {
        return Json::array();
    }
    return editsJson(state, document, {difference(document.text(), formatted.text)});
}

bool overlap(TextSpan a, TextSpan b) {
    return a.begin <= b.end && b.begin <= a.end;
}

Json codeActions(State& state, const Json& params) {
    const Document& document = state.documentOf(params);
    const TextSpan asked = state.spanOf(document, params.at("range"));
    Json actions = Json::array();
    for (const Diagnostic& diagnostic : diagnose(state.workspace, state.evaluations, document)) {
        if (!overlap(diagnostic.span, asked)) {
            continue;
        }
        for (const Fix& fix : diagnostic.fixes) {
            Json changes = Json::object();
            changes[state.uriOfDocument(document)] = editsJson(state, document, fix.edits);
            actions.push_back({{"title", fix.title},
                               {"kind", "quickfix"},
                               {"isPreferred", diagnostic.fixes.size() == 1},
                               {"diagnostics", diagnosticsJson(state, document, {diagnostic})},
                               {"edit", {{"changes", std::move(changes)}}}});
        }
    }
    return actions;
}

template <Json (*answer)(State&, const Json&)>
std::string asText(State& state, const Json& params) {
    return textOf(answer(state, params));
}

constexpr RequestHandler kHandlers[] = {
    {"textDocument/hover", asText<hover>},
    {"textDocument/completion", asText<completion>},
    {"textDocument/definition", asText<definition>},
    {"textDocument/references", asText<references>},
    {"textDocument/documentHighlight", asText<highlights>},
    {"textDocument/prepareRename", asText<prepareRename>},
    {"textDocument/rename", asText<renameAll>},
    {"textDocument/documentSymbol", documentSymbols},
    {"textDocument/foldingRange", asText<folding>},
    {"textDocument/semanticTokens/full", asText<tokens>},
    {"textDocument/codeLens", codeLenses},
    {"textDocument/codeAction", asText<codeActions>},
    {"textDocument/formatting", asText<formatting>},
    {"workspace/symbol", asText<workspaceSymbols>},
};

int severityNumber(Severity severity) {
    switch (severity) {
        case Severity::Error:
            return 1;
        case Severity::Warning:
            return 2;
        case Severity::Hint:
            break;
    }
    return 4;
}

}  // namespace

std::span<const RequestHandler> requestHandlers() noexcept {
    return kHandlers;
}

Json diagnosticsJson(const State& state, const Document& document,
                     const std::vector<Diagnostic>& diagnostics) {
    constexpr int kUnnecessary = 1;
    Json all = Json::array();
    for (const Diagnostic& each : diagnostics) {
        std::string message = each.message;
        for (const std::string& note : each.notes) {
            message += note.empty() ? "" : "\n" + note;
        }
        Json json = {{"range", state.rangeOf(document, each.span)},
                     {"severity", severityNumber(each.severity)},
                     {"code", each.rule},
                     {"source", "vesk"},
                     {"message", std::move(message)}};
        if (each.rule == rule::kUnread) {
            json["tags"] = Json::array({kUnnecessary});
        }
        all.push_back(std::move(json));
    }
    return all;
}

}  // namespace Vesk::editor
