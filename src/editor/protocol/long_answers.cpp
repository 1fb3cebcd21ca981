#include "editor/protocol/long_answers.h"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>
#include <string_view>

namespace Vesk::editor {
namespace {

/// Writes JSON about places of one document.
class AnswerWriter {
  public:
    AnswerWriter(const State& state, const Document& document)
        : state_(state), document_(document) {}

    void raw(std::string_view json) { json_ += json; }

    void number(int number) { fmt::format_to(std::back_inserter(json_), "{}", number); }

    void text(std::string_view text) {
        if (std::ranges::all_of(text, isPlain)) {
            json_.append(1, '"').append(text).append(1, '"');
        } else {
            json_ += textOf(Json(text));
        }
    }

    void range(TextSpan span) {
        raw(R"({"start":)");
        position(span.begin);
        raw(R"(,"end":)");
        position(span.end);
        raw("}");
    }

    /// A comma between the elements of a list that has been opened.
    void next() { json_ += json_.back() == '[' ? "" : ","; }

    std::string take() { return std::move(json_); }

  private:
    static bool isPlain(char c) noexcept { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; }

    void position(std::uint32_t byte) {
        const LinePlace place = document_.lines().placeOf(document_.text(), byte, state_.unit);
        fmt::format_to(std::back_inserter(json_), R"({{"line":{},"character":{}}})", place.line,
                       place.column);
    }

    const State& state_;
    const Document& document_;
    std::string json_;
};

void addSymbol(AnswerWriter& out, const OutlineItem& item) {
    out.next();
    out.raw(R"({"name":)");
    out.text(item.name.empty() ? "?" : item.name);
    out.raw(R"(,"detail":)");
    out.text(item.detail);
    out.raw(R"(,"kind":)");
    out.number(symbolKind(item.kind));
    out.raw(R"(,"range":)");
    out.range(item.span);
    out.raw(R"(,"selectionRange":)");
    out.range(item.nameSpan);
    out.raw(R"(,"children":[)");
    for (const OutlineItem& child : item.children) {
        addSymbol(out, child);
    }
    out.raw("]}");
}

void addLens(AnswerWriter& out, const Lens& lens, std::string_view what) {
    out.next();
    out.raw(R"({"range":)");
    out.range(lens.span);
    out.raw(R"(,"command":{"title":)");
    out.text(what);
    out.raw(R"(,"command":"vesk.)");
    out.raw(what);
    out.raw(R"(","arguments":[{"target":)");
    out.text(lens.target);
    out.raw(R"(,"directory":)");
    out.text(lens.directory);
    out.raw(R"(,"file":)");
    out.text(lens.file);
    out.raw("}]}}");
}

}  // namespace

int symbolKind(OutlineKind kind) noexcept {
    switch (kind) {
        case OutlineKind::Unit:
            return 2;  // module
        case OutlineKind::Target:
            return 12;  // function
        case OutlineKind::Profile:
            return 3;  // namespace
        case OutlineKind::Tool:
            return 19;  // object
        case OutlineKind::Output:
            return 7;  // property
        case OutlineKind::File:
            return 1;
    }
    return 13;
}

std::string documentSymbols(State& state, const Json& params) {
    const Document& document = state.documentOf(params);
    AnswerWriter out(state, document);
    out.raw("[");
    for (const OutlineItem& item : outlineOf(document)) {
        addSymbol(out, item);
    }
    out.raw("]");
    return out.take();
}

std::string codeLenses(State& state, const Json& params) {
    const Document& document = state.documentOf(params);
    AnswerWriter out(state, document);
    out.raw("[");
    for (const Lens& lens : lensesOf(state.workspace, document)) {
        addLens(out, lens, "build");
        addLens(out, lens, "why");
    }
    out.raw("]");
    return out.take();
}

}  // namespace Vesk::editor
