#include "project/registry_comments.h"

#include <algorithm>
#include <iterator>

#include "CommonLexer.h"

#include "base/text.h"
#include "grammar/text_stream.h"

namespace Vesk {

using Lexer = grammar::CommonLexer;

namespace anchor {

std::string sectionStart(std::string_view section) {
    return std::string(section) + " {";
}
std::string sectionEnd(std::string_view section) {
    return std::string(section) + " }";
}
std::string project(std::string_view name) {
    return "project " + std::string(name);
}
std::string toolStart(std::string_view tool) {
    return "tool " + lowerCased(tool) + " {";
}
std::string toolEnd(std::string_view tool) {
    return "tool " + lowerCased(tool) + " }";
}

std::string variable(std::string_view tool, std::string_view name) {
    return "tool " + lowerCased(tool) + " . " + lowerCased(name);
}

std::string condition(std::string_view tool, std::size_t index) {
    return "tool " + lowerCased(tool) + " if " + std::to_string(index);
}

}  // namespace anchor

namespace {

bool isModifier(std::size_t type) {
    return type == Lexer::UP || type == Lexer::MUST || type == Lexer::HINT;
}

/// Tells for each token of a registry file to which line of the written form it belongs.
class LineTracker {
  public:
    /// `next` is the token after it; both stay alive as long as the tracker.
    const std::string& enter(antlr4::Token& token, antlr4::Token* next) {
        const std::size_t type = token.getType();
        if (depth_ == 0) {
            enterTop(type, token);
        } else if (depth_ == 1) {
            enterSection(type, token);
        } else if (depth_ == 2) {
            enterTool(type, token, next);
        } else {
            depth_ += type == Lexer::LBRACE ? 1 : type == Lexer::RBRACE ? -1 : 0;
        }
        previous_ = type;
        return anchor_;
    }

  private:
    void enterTop(std::size_t type, antlr4::Token& token) {
        if (type == Lexer::LBRACE) {
            depth_ = 1;
        } else {
            section_ = token.getText();
            anchor_ = anchor::sectionStart(section_);
        }
    }

    void enterSection(std::size_t type, antlr4::Token& token) {
        if (type == Lexer::RBRACE) {
            depth_ = 0;
            anchor_ = anchor::sectionEnd(section_);
        } else if (type == Lexer::LBRACE) {
            depth_ = 2;
            conditions_ = 0;
        } else if (type == Lexer::IDENTIFIER) {
            entry_ = token.getText();
            anchor_ = section_ == "tools" ? anchor::toolStart(entry_) : anchor::project(entry_);
        }
    }

    void enterTool(std::size_t type, antlr4::Token& token, antlr4::Token* next) {
        if (type == Lexer::LBRACE) {
            depth_ = 3;
            inCondition_ = false;
        } else if (type == Lexer::RBRACE) {
            depth_ = 1;
            anchor_ = anchor::toolEnd(entry_);
        } else if (type == Lexer::LSQUARE) {
            ++brackets_;
        } else if (type == Lexer::RSQUARE) {
            --brackets_;
        } else if (type == Lexer::IF_STR && startsStatement()) {
            inCondition_ = true;
            anchor_ = anchor::condition(entry_, conditions_++);
        } else if (type == Lexer::IDENTIFIER && startsStatement()) {
            anchor_ = anchor::variable(entry_, token.getText());
        } else if (isModifier(type) && next != nullptr) {
            anchor_ = anchor::variable(entry_, next->getText());
        }
    }

    bool startsStatement() const {
        const bool insideValue = previous_ == Lexer::EQUALS || previous_ == Lexer::APPEND ||
                                 previous_ == Lexer::ASSIGNEMPTY || previous_ == Lexer::DOT;
        return !insideValue && brackets_ == 0 && !inCondition_;
    }

    int depth_ = 0;
    int brackets_ = 0;
    bool inCondition_ = false;
    std::size_t conditions_ = 0;
    std::size_t previous_ = 0;
    std::string section_;
    std::string entry_;
    std::string anchor_;
};

struct FoundComment {
    std::string text;
    bool onLineOfToken;  ///< no line end between it and the token before it
};

/// The comments in what stands between two tokens, which is nothing but blanks and comments.
std::vector<FoundComment> commentsIn(const std::string& gap) {
    std::vector<FoundComment> found;
    bool onLineOfToken = true;
    for (std::size_t at = 0; at + 1 < gap.size();) {
        if (gap[at] != '/') {
            onLineOfToken = onLineOfToken && gap[at] != '\n';
            ++at;
            continue;
        }
        const bool line = gap[at + 1] == '/';
        std::size_t end = line ? gap.find_first_of("\r\n", at) : gap.find("*/", at + 2);
        end = end == std::string::npos ? gap.size() : end + (line ? 0 : 2);
        found.push_back({gap.substr(at, end - at), onLineOfToken});
        at = std::max(end, at + 1);
    }
    return found;
}

}  // namespace

/// Walks over the tokens and files the comments between them.
class RegistryComments::Reader {
  public:
    explicit Reader(RegistryComments& comments) : comments_(comments) {}

    void read(std::string_view text) {
        TextStream stream(text, {});
        Lexer lexer(&stream);
        lexer.removeErrorListeners();
        const auto tokens = lexer.getAllTokens();
        LineTracker tracker;
        std::string previous;
        std::size_t from = 0;
        for (std::size_t i = 0; i < tokens.size(); ++i) {
            antlr4::Token* next = i + 1 < tokens.size() ? tokens[i + 1].get() : nullptr;
            const std::string current = tracker.enter(*tokens[i], next);
            file(gapOf(stream, from, tokens[i]->getStartIndex()), previous, current);
            previous = current;
            from = tokens[i]->getStopIndex() + 1;
        }
        file(gapOf(stream, from, stream.size()), previous, {});
    }

  private:
    static std::string gapOf(TextStream& stream, std::size_t from, std::size_t to) {
        if (from >= to) {
            return {};
        }
        return stream.getText(
            antlr4::misc::Interval(static_cast<ssize_t>(from), static_cast<ssize_t>(to) - 1));
    }

    /// `previous` and `current` are the anchors before and after the gap; empty at the file's ends.
    void file(const std::string& gap, const std::string& previous, const std::string& current) {
        for (FoundComment& comment : commentsIn(gap)) {
            if (previous.empty()) {
                comments_.head_.push_back(std::move(comment.text));
            } else if (comment.onLineOfToken && previous != current) {
                placed(previous).behind.push_back(std::move(comment.text));
            } else if (current.empty()) {
                comments_.tail_.push_back(std::move(comment.text));
            } else {
                placed(current).before.push_back(std::move(comment.text));
            }
        }
    }

    Comments& placed(const std::string& lineAnchor) {
        const auto [place, isNew] = comments_.placed_.try_emplace(lineAnchor);
        if (isNew) {
            place->second.order = comments_.placed_.size();
        }
        return place->second.comments;
    }

    RegistryComments& comments_;
};

RegistryComments::RegistryComments(const std::string& text) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    std::string_view rest = text;
    if (rest.starts_with(kByteOrderMark)) {
        rest.remove_prefix(kByteOrderMark.size());
    }
    Reader(*this).read(rest);
}

Comments RegistryComments::take(const std::string& lineAnchor) {
    const auto found = placed_.find(lineAnchor);
    if (found == placed_.end()) {
        return {};
    }
    Comments comments = std::move(found->second.comments);
    placed_.erase(found);
    return comments;
}

std::vector<std::string> RegistryComments::takeHead() {
    return std::exchange(head_, {});
}

std::vector<std::string> RegistryComments::takeRest() {
    std::vector<Placed> left;
    for (auto& [lineAnchor, placed] : placed_) {
        left.push_back(std::move(placed));
    }
    placed_.clear();
    std::sort(left.begin(), left.end(),
              [](const Placed& a, const Placed& b) { return a.order < b.order; });
    std::vector<std::string> rest;
    for (Placed& placed : left) {
        auto& [before, behind] = placed.comments;
        std::move(before.begin(), before.end(), std::back_inserter(rest));
        std::move(behind.begin(), behind.end(), std::back_inserter(rest));
    }
    std::move(tail_.begin(), tail_.end(), std::back_inserter(rest));
    tail_.clear();
    return rest;
}

}  // namespace Vesk
