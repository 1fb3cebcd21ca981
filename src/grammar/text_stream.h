// The lexer's view of a text in memory.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "antlr4-runtime.h"

namespace Vesk {

/// A stream of code points over UTF-8 text. Nearly all text is ASCII and is read in place; the
/// runtime's own stream would first copy it to four times its size. The text must outlive the
/// stream and the tokens made from it.
///
/// Text that is not well-formed UTF-8 is read byte by byte. The tokens are the same then, since
/// only ASCII characters have a meaning outside strings, and strings keep their bytes.
class TextStream : public antlr4::CharStream {
  public:
    TextStream(std::string_view text, std::string name);

    void consume() override;
    std::size_t LA(ssize_t offset) override;
    ssize_t mark() override { return -1; }
    void release(ssize_t) override {}
    std::size_t index() override { return position_; }
    void seek(std::size_t index) override;
    std::size_t size() override { return size_; }
    std::string getSourceName() const override { return name_; }
    std::string getText(const antlr4::misc::Interval& interval) override;
    std::string toString() const override { return std::string(bytes_); }

  private:
    std::size_t at(std::size_t index) const noexcept {
        return wide_.empty() ? static_cast<unsigned char>(bytes_[index]) : wide_[index];
    }

    std::string_view bytes_;
    std::u32string wide_;  ///< the decoded text; empty when bytes are code points
    std::size_t size_;
    std::size_t position_ = 0;
    std::string name_;
};

}  // namespace Vesk
