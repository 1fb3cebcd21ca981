#include "editor/document.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "base/text.h"

namespace Vesk::editor {
namespace {

/// The tokens of a text without its comments.
class Words {
  public:
    Words(std::string_view text, const std::vector<SyntaxToken>& tokens) : text_(text) {
        std::ranges::copy_if(tokens, std::back_inserter(tokens_),
                             [](const SyntaxToken& token) { return !token.isComment(); });
    }

    std::size_t size() const noexcept { return tokens_.size(); }
    TextSpan spanOf(std::size_t word) const { return tokens_[word].span; }
    std::string_view operator[](std::size_t word) const {
        return word < tokens_.size() ? tokens_[word].span.of(text_) : std::string_view();
    }

    /// A name at the start of a line that a colon follows, perhaps behind parameters in brackets.
    /// Nothing else of a unit file looks like this.
    bool isHead(std::size_t word) const {
        if (word >= tokens_.size() || tokens_[word].kind != TokenClass::Name || !startsLine(word)) {
            return false;
        }
        std::size_t next = word + 1;
        if ((*this)[next] == "(") {
            while (next < tokens_.size() && (*this)[next] != ")") {
                ++next;
            }
            ++next;
        }
        return (*this)[next] == ":";
    }

  private:
    bool startsLine(std::size_t word) const {
        const std::uint32_t begin = tokens_[word].span.begin;
        return begin == 0 || text_[begin - 1] == '\n' || text_[begin - 1] == '\r';
    }

    std::string_view text_;
    std::vector<SyntaxToken> tokens_;
};

/// Where pieces end. The last one is the end of the text.
std::vector<std::uint32_t> cutsOf(std::string_view text) {
    const SyntaxTree tree = lexSyntax(text);
    const Words words(text, tree.tokens);
    std::vector<std::uint32_t> cuts;
    std::size_t depth = 0;
    bool empty = true;  // nothing but blanks since the last cut
    for (std::size_t word = 0; word < words.size(); ++word) {
        if (!empty && words.isHead(word)) {
            cuts.push_back(words.spanOf(word).begin);
            depth = 0;
        }
        empty = false;
        depth += words[word] == "{" ? 1 : 0;
        if (words[word] == "}" && (depth == 0 || --depth == 0)) {
            cuts.push_back(words.spanOf(word).end);
            empty = true;
        }
    }
    if (cuts.empty() || cuts.back() < text.size()) {
        cuts.push_back(static_cast<std::uint32_t>(text.size()));
    }
    return cuts;
}

std::uint32_t lineEndsIn(std::string_view text) {
    return LineIndex(text).lineCount() - 1;
}

}  // namespace

Document::Document(std::filesystem::path path, FileKind kind, std::string text)
    : path_(std::move(path)), kind_(kind) {
    replaceAll(std::move(text));
}

void Document::replaceAll(std::string text) {
    text_ = std::move(text);
    lines_ = LineIndex(text_);
    ++revision_;
    pieces_.clear();
    parseRegion(0, 0, {0, static_cast<std::uint32_t>(text_.size())});
}

Piece Document::parsePiece(TextSpan span, std::uint32_t firstLine) const {
    const std::string_view text = span.of(text_);
    Piece piece{span, firstLine,
                std::make_shared<const SyntaxTree>(parseSyntax(text, kind_, firstLine + 1)),
                nullptr};
    piece.symbols = std::make_shared<const Symbols>(symbolsOf(text, *piece.tree));
    return piece;
}

/// Replaces the pieces from `first` up to `end` by those of the region.
void Document::parseRegion(std::size_t first, std::size_t end, TextSpan region) {
    std::vector<std::uint32_t> cuts{region.size()};
    if (kind_ == FileKind::Unit) {
        cuts = cutsOf(region.of(text_));
    }
    std::vector<Piece> made;
    std::uint32_t begin = region.begin;
    for (const std::uint32_t cut : cuts) {
        const TextSpan span{begin, region.begin + cut};
        made.push_back(parsePiece(span, lines_.lineOf(begin)));
        begin = span.end;
    }
    const auto at = pieces_.erase(pieces_.begin() + static_cast<std::ptrdiff_t>(first),
                                  pieces_.begin() + static_cast<std::ptrdiff_t>(end));
    pieces_.insert(at, std::make_move_iterator(made.begin()), std::make_move_iterator(made.end()));
}

/// Whether what follows may belong to the piece as well.
bool Document::isOpen(const Piece& piece) const {
    const Words words(textOf(piece), piece.tree->tokens);
    std::size_t depth = 0;
    for (std::size_t word = 0; word < words.size(); ++word) {
        depth += words[word] == "{" ? 1 : 0;
        depth -= words[word] == "}" && depth > 0 ? 1 : 0;
    }
    return words.size() > 0 && (depth > 0 || words[words.size() - 1] != "}");
}

bool Document::beginsWithHead(const Piece& piece) const {
    const Words words(textOf(piece), piece.tree->tokens);
    return words.size() == 0 || words.isHead(0);
}

void Document::moveRest(std::size_t from, std::int64_t bytes, std::int64_t lines) {
    for (std::size_t index = from; index < pieces_.size(); ++index) {
        Piece& piece = pieces_[index];
        piece.span.begin = static_cast<std::uint32_t>(piece.span.begin + bytes);
        piece.span.end = static_cast<std::uint32_t>(piece.span.end + bytes);
        piece.firstLine = static_cast<std::uint32_t>(piece.firstLine + lines);
        if (lines != 0 && !piece.tree->errors.empty()) {
            piece = parsePiece(piece.span, piece.firstLine);  // its messages name lines
        }
    }
}

void Document::replace(TextSpan span, std::string_view with) {
    span.end = std::min(span.end, static_cast<std::uint32_t>(text_.size()));
    span.begin = std::min(span.begin, span.end);
    if (kind_ != FileKind::Unit) {
        std::string changed = text_;
        changed.replace(span.begin, span.size(), with);
        replaceAll(std::move(changed));
        return;
    }
    std::size_t first = 0;
    while (first + 1 < pieces_.size() && pieces_[first].span.end < span.begin) {
        ++first;
    }
    std::size_t end = first + 1;
    while (end < pieces_.size() && pieces_[end].span.begin <= span.end) {
        ++end;
    }
    while (first > 0 && isOpen(pieces_[first - 1])) {
        --first;
    }
    const std::int64_t lines = std::int64_t{lineEndsIn(with)} - lineEndsIn(span.of(text_));
    const std::int64_t bytes = static_cast<std::int64_t>(with.size()) - span.size();
    text_.replace(span.begin, span.size(), with);
    lines_ = LineIndex(text_);
    ++revision_;
    moveRest(end, bytes, lines);
    for (std::size_t size = 1;; size *= 2) {
        const std::size_t before = pieces_.size();
        const std::uint32_t begin = pieces_[first].span.begin;
        const auto stop =
            end < before ? pieces_[end].span.begin : static_cast<std::uint32_t>(text_.size());
        parseRegion(first, end, {begin, stop});
        end += pieces_.size() - before;
        if (end == pieces_.size() || !isOpen(pieces_[end - 1]) || beginsWithHead(pieces_[end])) {
            return;
        }
        end = std::min(end + size, pieces_.size());
    }
}

bool Document::settle() {
    const bool doubtful = std::ranges::any_of(pieces_, [](const Piece& piece) {
        return std::ranges::any_of(piece.tree->errors, &SyntaxError::lexical);
    });
    if (!doubtful || kind_ != FileKind::Unit || !parseSyntax(text_, kind_).errors.empty()) {
        return false;
    }
    replaceAll(std::string(text_));
    return true;
}

const Piece& Document::pieceAt(std::uint32_t place) const {
    auto found = std::ranges::find_if(
        pieces_, [place](const Piece& piece) { return place <= piece.span.end; });
    if (found == pieces_.end()) {
        return pieces_.back();
    }
    const bool atWord =
        place < text_.size() && !trimmed(std::string_view(text_).substr(place, 1)).empty();
    const bool atBorder = place == found->span.end && std::next(found) != pieces_.end();
    return atWord && atBorder ? *std::next(found) : *found;
}

}  // namespace Vesk::editor
