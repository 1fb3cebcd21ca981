#include "grammar/text_stream.h"

#include <algorithm>
#include <utility>

#include "grammar/utf8.h"

namespace Vesk {

TextStream::TextStream(std::string_view text, std::string name)
    : bytes_(text), size_(text.size()), name_(std::move(name)) {
    if (!isAscii(text) && wellFormedUtf8(text) == text.size()) {
        wide_ = decodeUtf8(text);
        size_ = wide_.size();
    }
}

void TextStream::consume() {
    if (position_ >= size_) {
        throw antlr4::IllegalStateException("cannot consume EOF");
    }
    ++position_;
}

std::size_t TextStream::LA(ssize_t offset) {
    if (offset == 1) {  // the usual case
        return position_ < size_ ? at(position_) : antlr4::IntStream::EOF;
    }
    if (offset == 0) {
        return 0;
    }
    // Offsets count forwards from the next character, 1, and backwards from the last one, -1.
    const ssize_t index = static_cast<ssize_t>(position_) + (offset > 0 ? offset - 1 : offset);
    if (index < 0 || static_cast<std::size_t>(index) >= size_) {
        return antlr4::IntStream::EOF;
    }
    return at(static_cast<std::size_t>(index));
}

void TextStream::seek(std::size_t index) {
    position_ = std::min(index, size_);
}

std::string TextStream::getText(const antlr4::misc::Interval& interval) {
    if (interval.a < 0 || interval.b < interval.a) {
        return {};
    }
    const auto start = static_cast<std::size_t>(interval.a);
    if (start >= size_) {
        return {};
    }
    const std::size_t count = std::min(static_cast<std::size_t>(interval.b), size_ - 1) - start + 1;
    return wide_.empty() ? std::string(bytes_.substr(start, count))
                         : encodeUtf8(std::u32string_view(wide_).substr(start, count));
}

}  // namespace Vesk
