#include "editor/format.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <utility>

#include "base/exception.h"
#include "base/text.h"
#include "editor/layout_writer.h"
#include "grammar/utf8.h"

namespace Vesk::editor {
namespace {

enum class Gap : std::uint8_t { None, Blank, Line };

bool isOneOf(std::string_view text, std::initializer_list<std::string_view> texts) {
    return std::ranges::find(texts, text) != texts.end();
}

bool isImport(SyntaxRule rule) {
    return rule == SyntaxRule::PathImport || rule == SyntaxRule::RegistryImport ||
           rule == SyntaxRule::ImportedProfile;
}

/// Between two tokens of one line; the rule is the innermost that the second belongs to.
Gap gapBetween(std::string_view before, std::string_view token, SyntaxRule rule) {
    if (isOneOf(token, {",", ";", ":", ")", "]", ".", "..", "::", "/"}) ||
        isOneOf(before, {"(", "[", ".", "..", "::", "/", "@", "^", "!", "?", "+"})) {
        return Gap::None;
    }
    if (rule == SyntaxRule::Index) {
        return Gap::None;
    }
    if (token == "(") {
        return isImport(rule) ? Gap::Blank : Gap::None;
    }
    return Gap::Blank;
}

/// What layout asks about the tokens, answered for any range of them in one step.
class Measures {
  public:
    Measures(std::string_view text, const SyntaxTree& tree)
        : text_(text), tree_(tree), rules_(tree.tokens.size(), SyntaxRule::File) {
        markRules(tree.root);
        std::size_t width = 0;
        std::uint32_t breaks = 0;
        for (std::size_t token = 0; token < tree.tokens.size(); ++token) {
            widths_.push_back(width);
            breaks_.push_back(breaks);
            const bool blank = token > 0 && gap(token - 1, token) == Gap::Blank;
            width += widthOf(textOf(token)) + (blank ? 1 : 0);
            breaks += mustBreak(token) ? 1 : 0;
        }
        widths_.push_back(width);
        breaks_.push_back(breaks);
    }

    std::string_view textOf(std::size_t token) const { return tree_.tokens[token].span.of(text_); }
    SyntaxRule ruleOf(std::size_t token) const { return rules_[token]; }
    Gap gap(std::size_t before, std::size_t token) const {
        return gapBetween(textOf(before), textOf(token), ruleOf(token));
    }

    /// Of the tokens on one line.
    std::size_t width(std::size_t first, std::size_t end) const {
        const bool blank = first > 0 && gap(first - 1, first) == Gap::Blank;
        return widths_[end] - widths_[first] - (blank ? 1 : 0);
    }

    /// Whether something among the tokens does not go on one line.
    bool breaks(std::size_t first, std::size_t end) const { return breaks_[end] != breaks_[first]; }

    /// Line ends between two tokens that stand beside each other.
    std::size_t lineEnds(std::size_t token) const {
        const std::size_t from = token == 0 ? 0 : tree_.tokens[token - 1].span.end;
        const std::size_t to =
            token < tree_.tokens.size() ? tree_.tokens[token].span.begin : text_.size();
        return static_cast<std::size_t>(std::ranges::count(text_.substr(from, to - from), '\n'));
    }

  private:
    void markRules(const SyntaxNode& node) {
        std::fill(rules_.begin() + node.first, rules_.begin() + node.end, node.rule);
        for (const SyntaxNode& child : node.children) {
            markRules(child);
        }
    }

    bool mustBreak(std::size_t token) const {
        const std::string_view text = textOf(token);
        if (tree_.tokens[token].kind == TokenClass::LineComment ||
            text.find('\n') != std::string_view::npos) {
            return true;
        }
        const bool opens = text == "{" || (text == "[" && ruleOf(token) == SyntaxRule::List);
        return opens && lineEnds(token + 1) > 0;
    }

    std::string_view text_;
    const SyntaxTree& tree_;
    std::vector<SyntaxRule> rules_;
    std::vector<std::size_t> widths_;
    std::vector<std::uint32_t> breaks_;
};

class Layout {
  public:
    Layout(std::string_view text, const SyntaxTree& tree, std::string_view lineEnd)
        : tree_(tree), measures_(text, tree), writer_(lineEnd) {}

    std::string run() {
        for (const SyntaxNode& item : tree_.root.children) {
            forced_ = Gap::Line;
            item_ = item.first;
            node(item);
            afterBlock_ =
                writer_.line() != itemLine_ || isSection(item.rule) || isHeading(item.rule);
        }
        takeUpTo(tree_.tokens.size());
        return writer_.finish();
    }

  private:
    static bool isSection(SyntaxRule rule) {
        return isOneOfRules(rule, {SyntaxRule::Imports, SyntaxRule::Tools, SyntaxRule::Units,
                                   SyntaxRule::Profiles, SyntaxRule::Projects});
    }
    static bool isHeading(SyntaxRule rule) {
        return rule == SyntaxRule::UnitName || rule == SyntaxRule::ProjectName;
    }
    static bool isOneOfRules(SyntaxRule rule, std::initializer_list<SyntaxRule> rules) {
        return std::ranges::find(rules, rule) != rules.end();
    }
    static bool isBlock(SyntaxRule rule) {
        return rule == SyntaxRule::Context || rule == SyntaxRule::UnitEntry || isSection(rule);
    }

    // --- Parts of the tree ---

    void node(const SyntaxNode& part) {
        switch (part.rule) {
            case SyntaxRule::Target:
                target(part);
                break;
            case SyntaxRule::List:
                list(part);
                break;
            default:
                isBlock(part.rule) ? block(part) : inOrder(part);
                break;
        }
    }

    /// Tokens and parts as they come.
    void inOrder(const SyntaxNode& part) {
        for (const SyntaxNode& child : part.children) {
            takeUpTo(child.first);
            node(child);
        }
        takeUpTo(part.end);
    }

    /// Dependencies that do not fit go on in the next line.
    void target(const SyntaxNode& part) {
        const std::size_t indent = indent_;
        for (const SyntaxNode& child : part.children) {
            const bool body = child.rule == SyntaxRule::Context;
            takeUpTo(child.first);
            if (child.rule == SyntaxRule::Dependency) {
                const bool last = child.end < part.end && measures_.textOf(child.end) == "{";
                indent_ = indent + 2 * kIndent;
                wrapBefore(child, last ? 2 : 0);
            }
            indent_ = body ? indent : indent_;
            node(child);
        }
        takeUpTo(part.end);
        indent_ = indent;
    }

    /// What stands in braces: on one line, or each item on its own.
    void block(const SyntaxNode& part) {
        std::size_t open = part.first;
        while (open < part.end && measures_.textOf(open) != "{") {
            ++open;
        }
        takeUpTo(open);
        const std::size_t close = part.end - 1;
        const bool empty = open + 1 == close;
        if (empty || (!isSection(part.rule) && fits(open, part.end))) {
            takeUpTo(empty ? close : open);
            forced_ = empty ? Gap::None : forced_;
            inOrder(part);
            return;
        }
        takeUpTo(open + 1);
        indent_ += kIndent;
        first_ = true;
        for (const SyntaxNode& child : part.children) {
            forced_ = Gap::Line;
            node(child);
        }
        strings(close);
        comments(close);
        indent_ -= kIndent;
        forced_ = Gap::Line;
        first_ = true;  // no empty line before the brace
        takeUpTo(part.end);
    }

    /// The files of a unit, which are no parts of the tree.
    void strings(std::size_t close) {
        while (next_ < close) {
            forced_ = tree_.tokens[next_].isComment() ? forced_ : Gap::Line;
            takeUpTo(next_ + 1);
        }
    }

    void list(const SyntaxNode& part) {
        const std::size_t open = part.first;
        if (part.children.empty() || fits(open, part.end)) {
            inOrder(part);
            return;
        }
        const std::size_t indent = indent_;
        const bool hanging = measures_.lineEnds(open + 1) > 0;
        takeUpTo(open + 1);
        indent_ = hanging ? indent_ + kIndent : writer_.column();
        first_ = true;
        for (const SyntaxNode& element : part.children) {
            takeUpTo(element.first);
            const bool startsLine = hanging && measures_.lineEnds(element.first) > 0;
            if (startsLine) {
                forced_ = Gap::Line;
            } else {
                wrapBefore(element, 1);
            }
            node(element);
        }
        closeList(part, hanging, indent);
    }

    void closeList(const SyntaxNode& part, bool hanging, std::size_t indent) {
        comments(part.end - 1);
        indent_ = indent;
        if (hanging) {
            forced_ = Gap::Line;
            first_ = true;
        }
        takeUpTo(part.end);
    }

    /// Whether the tokens, beginning with the next one, go on this line.
    bool fits(std::size_t first, std::size_t end) const {
        if (measures_.breaks(first, end)) {
            return false;
        }
        const bool startsLine = forced_ == Gap::Line || lineComment_;
        const std::size_t column = startsLine ? indent_ : writer_.column() + 1;
        const bool comma = end < tree_.tokens.size() && measures_.textOf(end) == ",";
        return column + measures_.width(first, end) + (comma ? 1 : 0) <= kMaxWidth;
    }

    /// Begins a line if the part and `more` columns do not fit behind what is on this one.
    void wrapBefore(const SyntaxNode& part, std::size_t more) {
        const std::size_t width = measures_.width(part.first, part.end) + more;
        const bool startsLine = writer_.column() <= indent_;
        if (!startsLine && writer_.column() + 1 + width > kMaxWidth) {
            forced_ = Gap::Line;
        }
    }

    // --- Tokens ---

    void takeUpTo(std::size_t end) {
        while (next_ < end) {
            if (tree_.tokens[next_].isComment()) {
                comment(next_);
            } else {
                token(next_);
            }
        }
    }

    /// The comments that stand before the token; only comments may.
    void comments(std::size_t before) {
        while (next_ < before && tree_.tokens[next_].isComment()) {
            comment(next_);
        }
    }

    void token(std::size_t index) {
        Gap gap = forced_;
        if (gap == Gap::Blank) {
            gap = index == 0 ? Gap::None : measures_.gap(index - 1, index);
        }
        if (lineComment_) {
            gap = Gap::Line;
        } else if (afterComment_ && gap == Gap::None) {
            gap = Gap::Blank;
        }
        startWith(gap, index);
        itemLine_ = index == item_ ? writer_.line() : itemLine_;
        writer_.put(measures_.textOf(index));
        lineComment_ = afterComment_ = afterBlock_ = first_ = false;
        forced_ = Gap::Blank;
        next_ = index + 1;
    }

    void startWith(Gap gap, std::size_t index) {
        if (gap == Gap::Line) {
            const bool emptyLine = afterBlock_ || measures_.lineEnds(index) > 1;
            writer_.startLine(indent_, emptyLine && !first_);
        } else if (gap == Gap::Blank && !writer_.isEmpty()) {
            writer_.put(" ");
        }
    }

    void comment(std::size_t index) {
        const std::string_view text = trimmed(measures_.textOf(index));
        const bool line = tree_.tokens[index].kind == TokenClass::LineComment;
        const bool behind = !writer_.isEmpty() && !lineComment_ && measures_.lineEnds(index) == 0;
        if (behind && line) {
            writer_.putTrailing(text);
        } else {
            startWith(behind ? Gap::Blank : Gap::Line, index);
            writer_.put(text);
            afterBlock_ = afterBlock_ && behind;
            first_ = first_ && behind;
        }
        lineComment_ = line || (measures_.lineEnds(index + 1) > 0 && !behind);
        afterComment_ = true;
        next_ = index + 1;
    }

    const SyntaxTree& tree_;
    Measures measures_;
    LayoutWriter writer_;
    std::size_t next_ = 0;      ///< the token to write
    std::size_t indent_ = 0;    ///< of lines that begin now
    std::size_t item_ = 0;      ///< the first token of an item of the file,
    std::size_t itemLine_ = 0;  ///< and the line on which it was written
    Gap forced_ = Gap::Blank;   ///< before the next token; Blank: as the two tokens have it
    bool lineComment_ = false;  ///< the line is to end
    bool afterComment_ = false;
    bool afterBlock_ = false;  ///< an empty line is to follow
    bool first_ = false;       ///< no empty line is to follow
};

std::string_view lineEndOf(std::string_view text) {
    const auto all = std::ranges::count(text, '\n');
    std::ptrdiff_t windows = 0;
    for (std::size_t at = text.find("\r\n"); at != std::string_view::npos;
         at = text.find("\r\n", at + 2)) {
        ++windows;
    }
    return 2 * windows > all ? "\r\n" : "\n";
}

std::string_view comparable(std::string_view text, const SyntaxToken& token) {
    return token.isComment() ? trimmed(token.span.of(text)) : token.span.of(text);
}

/// Whether both texts have the same tokens and comments; then they have the same tree.
bool sameTokens(std::string_view a, const SyntaxTree& ofA, std::string_view b,
                const SyntaxTree& ofB) {
    return ofB.errors.empty() &&
           std::ranges::equal(ofA.tokens, ofB.tokens, [&](const auto& left, const auto& right) {
               return left.kind == right.kind && comparable(a, left) == comparable(b, right);
           });
}

}  // namespace

Formatted formatText(std::string_view text, FileKind kind) {
    Formatted formatted;
    const bool marked = text.starts_with(kByteOrderMark);
    text.remove_prefix(marked ? kByteOrderMark.size() : 0);
    SyntaxTree tree = parseSyntax(text, kind);
    if (!tree.errors.empty()) {
        formatted.errors = std::move(tree.errors);
        return formatted;
    }
    std::string laidOut = Layout(text, tree, lineEndOf(text)).run();
    if (!sameTokens(text, tree, laidOut, lexSyntax(laidOut))) {
        throw VeskException(
            "The layout would change what the file means. This is a fault of vesk.");
    }
    formatted.text = marked ? std::string(kByteOrderMark) + laidOut : std::move(laidOut);
    return formatted;
}

}  // namespace Vesk::editor
