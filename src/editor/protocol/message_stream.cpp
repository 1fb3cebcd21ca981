#include "editor/protocol/message_stream.h"

#include <array>
#include <charconv>
#include <fmt/format.h>
#include <utility>

#include "base/ci_string.h"
#include "base/text.h"

namespace Vesk::editor {
namespace {

constexpr std::string_view kLength = "Content-Length:";
constexpr std::size_t kMaxBody = std::size_t{256} * 1024 * 1024;

/// Nothing for a line that gives no usable length.
std::optional<std::size_t> lengthIn(std::string_view line) {
    if (!equalsIgnoringCase(line.substr(0, kLength.size()), kLength)) {
        return std::nullopt;
    }
    const std::string_view digits = trimmed(line.substr(kLength.size()));
    std::size_t length = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), length);
    const bool good = error == std::errc() && end == digits.data() + digits.size();
    return good && length <= kMaxBody ? std::optional(length) : std::nullopt;
}

}  // namespace

bool MessageReader::fill() {
    std::array<char, 65536> bytes{};
    const std::size_t count = source_(bytes.data(), bytes.size());
    buffer_.append(bytes.data(), count);
    return count > 0;
}

/// Without its end.
std::optional<std::string> MessageReader::line() {
    std::size_t end = buffer_.find('\n');
    while (end == std::string::npos) {
        if (!fill()) {
            return std::nullopt;
        }
        end = buffer_.find('\n');
    }
    std::string text = buffer_.substr(0, end);
    buffer_.erase(0, end + 1);
    if (text.ends_with('\r')) {
        text.pop_back();
    }
    return text;
}

std::optional<std::string> MessageReader::next() {
    std::optional<std::size_t> length;
    for (auto header = line(); header; header = line()) {
        if (const auto given = lengthIn(*header)) {
            length = given;
        }
        if (!header->empty() || !length) {
            continue;
        }
        while (buffer_.size() < *length) {
            if (!fill()) {
                return std::nullopt;
            }
        }
        std::string body = buffer_.substr(0, *length);
        buffer_.erase(0, *length);
        return body;
    }
    return std::nullopt;
}

std::string framed(std::string_view body) {
    return fmt::format("Content-Length: {}\r\n\r\n{}", body.size(), body);
}

}  // namespace Vesk::editor
