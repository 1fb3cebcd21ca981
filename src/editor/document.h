// One text with its index, kept current while it is edited.
//
// A unit file is cut into pieces, about one for each target, and an edit parses only the pieces
// that it touches: the parser is too slow to read a large file between two keystrokes. Cuts are
// made where a target ends, and before what can only be the head of one; so a file that is right is
// cut at its targets, and in one with a brace too few or too many the damage ends at the next
// target.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "editor/line_index.h"
#include "editor/symbols.h"
#include "grammar/syntax_tree.h"

namespace Vesk::editor {

/// A part of a document. What it refers to is not changed, and stays the same object as long as the
/// text of the part does; places in it are counted from the piece's begin.
struct Piece {
    TextSpan span;
    std::uint32_t firstLine = 0;  ///< from 0
    std::shared_ptr<const SyntaxTree> tree;
    std::shared_ptr<const Symbols> symbols;

    /// A place of the piece in the document, and back.
    TextSpan inDocument(TextSpan inPiece) const noexcept {
        return {span.begin + inPiece.begin, span.begin + inPiece.end};
    }
    std::uint32_t inPiece(std::uint32_t place) const noexcept { return place - span.begin; }
};

class Document {
  public:
    Document(std::filesystem::path path, FileKind kind, std::string text);

    const std::filesystem::path& path() const noexcept { return path_; }
    FileKind kind() const noexcept { return kind_; }
    const std::string& text() const noexcept { return text_; }
    const LineIndex& lines() const noexcept { return lines_; }
    const std::vector<Piece>& pieces() const noexcept { return pieces_; }
    std::string_view textOf(const Piece& piece) const { return piece.span.of(text_); }

    /// Grows with every change.
    std::uint64_t revision() const noexcept { return revision_; }

    /// Puts a text in place of a span. Times grow with the pieces touched.
    void replace(TextSpan span, std::string_view with);
    void replaceAll(std::string text);

    /// Looks again at a text in which a quote or a comment seemed not to be closed: what closes it
    /// may stand in another piece. Reads all of the text; true if that made a difference.
    bool settle();

    /// The piece that a place belongs to; at a border the one that ends there.
    const Piece& pieceAt(std::uint32_t place) const;

  private:
    void parseRegion(std::size_t first, std::size_t end, TextSpan region);
    Piece parsePiece(TextSpan span, std::uint32_t firstLine) const;
    bool isOpen(const Piece& piece) const;
    bool beginsWithHead(const Piece& piece) const;
    void moveRest(std::size_t from, std::int64_t bytes, std::int64_t lines);

    std::filesystem::path path_;
    FileKind kind_;
    std::string text_;
    LineIndex lines_;
    std::vector<Piece> pieces_;
    std::uint64_t revision_ = 0;
};

}  // namespace Vesk::editor
