#include "editor/layout_writer.h"

#include <algorithm>

namespace Vesk::editor {
namespace {

constexpr std::size_t kBeforeComment = 2;  // blanks

}  // namespace

std::size_t widthOf(std::string_view text) noexcept {
    return static_cast<std::size_t>(std::ranges::count_if(
        text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80; }));
}

void LayoutWriter::put(std::string_view text) {
    text_ += text;
    line_ += static_cast<std::size_t>(std::ranges::count(text, '\n'));
    const std::size_t end = text.rfind('\n');
    column_ =
        end == std::string_view::npos ? column_ + widthOf(text) : widthOf(text.substr(end + 1));
}

void LayoutWriter::startLine(std::size_t indent, bool emptyLine) {
    if (isEmpty()) {
        return;
    }
    text_ += lineEnd_;
    text_ += emptyLine ? lineEnd_ : std::string_view();
    text_.append(indent, ' ');
    line_ += emptyLine ? 2 : 1;
    indent_ = indent;
    column_ = indent;
}

void LayoutWriter::putTrailing(std::string_view comment) {
    trailing_.push_back({line_, indent_, column_, text_.size()});
    put(comment);
}

std::string LayoutWriter::finish() {
    std::string result;
    std::size_t from = 0;
    for (auto first = trailing_.begin(); first != trailing_.end();) {
        auto last = first;
        std::size_t column = 0;
        for (; last != trailing_.end() && last->indent == first->indent &&
               last->line == first->line + static_cast<std::size_t>(last - first);
             ++last) {
            column = std::max(column, last->column);
        }
        for (; first != last; ++first) {
            result.append(text_, from, first->offset - from);
            result.append(column - first->column + kBeforeComment, ' ');
            from = first->offset;
        }
    }
    result.append(text_, from);
    return result.empty() ? result : result.append(lineEnd_);
}

}  // namespace Vesk::editor
