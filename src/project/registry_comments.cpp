#include "project/registry_comments.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "base/text.h"
#include "grammar/identifier.h"
#include "grammar/token_texts.h"

namespace Vesk {

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
    return "tool " + std::string(tool) + " {";
}
std::string toolEnd(std::string_view tool) {
    return "tool " + std::string(tool) + " }";
}

std::string variable(std::string_view tool, std::string_view name) {
    return "tool " + std::string(tool) + " . " + lowerCased(name);
}

std::string condition(std::string_view tool, std::size_t index) {
    return "tool " + std::string(tool) + " if " + std::to_string(index);
}

}  // namespace anchor

namespace {

bool isModifier(std::string_view token) {
    return token == "^" || token == "!" || token == "?";
}

/// Tells for each token of a registry file to which line of the written form it belongs.
class LineTracker {
  public:
    /// `next` is the text of the token after it.
    const std::string& enter(const std::string& token, const std::string& next) {
        if (depth_ == 0) {
            enterTop(token);
        } else if (depth_ == 1) {
            enterSection(token);
        } else if (depth_ == 2) {
            enterTool(token, next);
        } else {
            depth_ += token == "{" ? 1 : token == "}" ? -1 : 0;
        }
        previous_ = token;
        return anchor_;
    }

  private:
    void enterTop(const std::string& token) {
        if (token == "{") {
            depth_ = 1;
        } else {
            section_ = token;
            anchor_ = anchor::sectionStart(section_);
        }
    }

    void enterSection(const std::string& token) {
        if (token == "}") {
            depth_ = 0;
            anchor_ = anchor::sectionEnd(section_);
        } else if (token == "{") {
            depth_ = 2;
            conditions_ = 0;
        } else if (isIdentifier(token)) {
            entry_ = token;
            anchor_ = section_ == "tools" ? anchor::toolStart(entry_) : anchor::project(entry_);
        }
    }

    void enterTool(const std::string& token, const std::string& next) {
        if (token == "{") {
            depth_ = 3;
            inCondition_ = false;
        } else if (token == "}") {
            depth_ = 1;
            anchor_ = anchor::toolEnd(entry_);
        } else if (token == "[") {
            ++brackets_;
        } else if (token == "]") {
            --brackets_;
        } else if (isModifier(token)) {
            anchor_ = anchor::variable(entry_, next);
        } else if (token == "if" && startsStatement()) {
            inCondition_ = true;
            anchor_ = anchor::condition(entry_, conditions_++);
        } else if (isIdentifier(token) && startsStatement()) {
            anchor_ = anchor::variable(entry_, token);
        }
    }

    bool startsStatement() const {
        const bool insideValue =
            previous_ == "=" || previous_ == "+=" || previous_ == "?=" || previous_ == ".";
        return !insideValue && brackets_ == 0 && !inCondition_;
    }

    int depth_ = 0;
    int brackets_ = 0;
    bool inCondition_ = false;
    std::size_t conditions_ = 0;
    std::string previous_;
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
        const std::vector<TokenText> tokens = tokenTexts(text);
        LineTracker tracker;
        std::string previous;
        for (std::size_t i = 0; i + 1 < tokens.size(); ++i) {
            const std::string current = tracker.enter(tokens[i].text, tokens[i + 1].text);
            file(tokens[i].before, previous, current);
            previous = current;
        }
        file(tokens.back().before, previous, {});
    }

  private:
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
    Reader(*this).read(text);
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
