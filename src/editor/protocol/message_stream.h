// Messages of the Language Server Protocol as they go over a stream: headers, an empty line, a
// body.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace Vesk::editor {

/// Gives the next bytes of the input, at most so many, and waits for them; 0 at its end.
using ByteSource = std::function<std::size_t(char* buffer, std::size_t size)>;

class MessageReader {
  public:
    explicit MessageReader(ByteSource source) : source_(std::move(source)) {}

    /// The next body; nothing at the end of the input. What is no header, or a header without a
    /// length, is skipped.
    std::optional<std::string> next();

  private:
    bool fill();
    std::optional<std::string> line();

    ByteSource source_;
    std::string buffer_;
};

/// The body with its header.
std::string framed(std::string_view body);

}  // namespace Vesk::editor
