#include "grammar/outline.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "base/ci_string.h"
#include "grammar/identifier.h"

namespace Vesk {
namespace {

enum class Kind : std::uint8_t { End, Word, String, DoubleColon, Sign };

struct Piece {
    Kind kind = Kind::End;
    std::string_view text;    ///< of a string what stands between the quotes
    bool beginsLine = false;  ///< only known of words

    bool is(char sign) const noexcept { return kind == Kind::Sign && text.front() == sign; }
};

/// Cuts a text into words, strings and signs.
class Cutter {
  public:
    explicit Cutter(std::string_view text) : rest_(text) {}

    Piece next() {
        skipBlanks();
        if (rest_.empty()) {
            return {};
        }
        if (rest_.front() == '"') {
            return string(1, "\"");
        }
        if (rest_.starts_with("R\"(") || rest_.starts_with("P\"(")) {
            return string(3, ")\"");
        }
        if (beginsIdentifier(rest_.front())) {
            const auto* const end = std::ranges::find_if_not(rest_, isInIdentifier);
            return {Kind::Word, take(static_cast<std::size_t>(end - rest_.begin())), beginsLine_};
        }
        return rest_.starts_with("::") ? Piece{Kind::DoubleColon, take(2), false}
                                       : Piece{Kind::Sign, take(1), false};
    }

  private:
    std::string_view take(std::size_t size) {
        const std::string_view taken = rest_.substr(0, size);
        rest_.remove_prefix(taken.size());
        return taken;
    }

    /// Drops all up to and with `end`, or to the end of the text. What stood before.
    std::string_view takeThrough(std::string_view end) {
        const std::string_view taken = take(rest_.find(end));
        take(end.size());
        return taken;
    }

    Piece string(std::size_t opening, std::string_view closing) {
        take(opening);
        return {Kind::String, takeThrough(closing), false};
    }

    void skipBlanks() {
        beginsLine_ = false;
        while (true) {
            const std::string_view blanks = take(rest_.find_first_not_of(" \t\r\n"));
            beginsLine_ = beginsLine_ || blanks.find('\n') != std::string_view::npos;
            if (rest_.starts_with("//")) {
                takeThrough("\n");
                beginsLine_ = true;
            } else if (rest_.starts_with("/*")) {
                takeThrough("*/");
            } else {
                return;
            }
        }
    }

    std::string_view rest_;
    bool beginsLine_ = false;
};

class Outliner {
  public:
    explicit Outliner(std::string_view text) : cutter_(text) {}

    std::vector<OutlinedTarget> run() {
        for (Piece piece = cutter_.next(); piece.kind != Kind::End; piece = cutter_.next()) {
            take(piece);
        }
        return std::move(targets_);
    }

  private:
    void take(const Piece& piece) {
        if (piece.kind == Kind::Word) {
            word_ = piece.text;
            beginsLine_ = piece.beginsLine;
            called_ = false;
            assigned_ = false;
        } else if (piece.is('(') && !word_.empty()) {
            skipArguments();
        } else if (piece.is(':') && !word_.empty() && (brackets_ == 0 || beginsLine_)) {
            begin();
        } else if (piece.is('=') && !called_) {
            assigned_ = true;
        } else {
            takeValue(piece);
            count(piece);
            word_ = {};
            assigned_ = false;
        }
    }

    /// The parentheses behind a name, which a header may follow.
    void skipArguments() {
        Piece piece = cutter_.next();
        while (piece.kind != Kind::End && !piece.is(')')) {
            piece = cutter_.next();
        }
        called_ = true;
    }

    void begin() {
        targets_.push_back({std::string(word_), called_, false, {}});
        word_ = {};
        braces_ = 0;
        brackets_ = 0;
    }

    void takeValue(const Piece& piece) {
        if (!assigned_ || braces_ != 1 || piece.kind != Kind::String || targets_.empty()) {
            return;
        }
        if (equalsIgnoringCase(word_, "DESCRIPTION")) {
            targets_.back().description = piece.text;
        } else if (equalsIgnoringCase(word_, "TEST")) {
            targets_.back().isTest = equalsIgnoringCase(piece.text, "yes");
        }
    }

    void count(const Piece& piece) {
        braces_ += piece.is('{') ? 1 : 0;
        braces_ -= piece.is('}') && braces_ > 0 ? 1 : 0;
        brackets_ += piece.is('[') ? 1 : 0;
        brackets_ -= piece.is(']') && brackets_ > 0 ? 1 : 0;
        if (piece.is('{') || piece.is('}')) {
            brackets_ = 0;
        }
    }

    Cutter cutter_;
    std::vector<OutlinedTarget> targets_;
    std::string_view word_;  ///< the last piece, or the one before "=" or "(...)", if it is a word
    bool beginsLine_ = false;  ///< it is the first on its line
    bool called_ = false;      ///< "(...)" stands behind it
    bool assigned_ = false;    ///< "=" does
    int braces_ = 0;           ///< open ones in the target
    int brackets_ = 0;         ///< open square ones
};

}  // namespace

std::vector<OutlinedTarget> targetOutline(std::string_view text) {
    return Outliner(text).run();
}

}  // namespace Vesk
