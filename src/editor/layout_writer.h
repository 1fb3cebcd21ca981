// Lines as they are put together, with the comments behind lines of one block in one column.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Vesk::editor {

/// The number of code points.
std::size_t widthOf(std::string_view text) noexcept;

class LayoutWriter {
  public:
    explicit LayoutWriter(std::string_view lineEnd) : lineEnd_(lineEnd) {}

    bool isEmpty() const noexcept { return text_.empty(); }
    std::size_t column() const noexcept { return column_; }
    std::size_t line() const noexcept { return line_; }

    /// Text as it is; it may hold line ends.
    void put(std::string_view text);

    /// Ends the line, leaves one empty if asked, and indents the next.
    void startLine(std::size_t indent, bool emptyLine);

    /// A comment behind the text of this line, which it ends.
    void putTrailing(std::string_view comment);

    /// All of it, with a line end at the end.
    std::string finish();

  private:
    struct Trailing {
        std::size_t line;
        std::size_t indent;  ///< of the line
        std::size_t column;
        std::size_t offset;  ///< in the text, where blanks go
    };

    std::string_view lineEnd_;
    std::string text_;
    std::size_t line_ = 0;
    std::size_t indent_ = 0;
    std::size_t column_ = 0;
    std::vector<Trailing> trailing_;
};

}  // namespace Vesk::editor
