#include "base/source_place.h"

#include <algorithm>
#include <fmt/format.h>
#include <mutex>
#include <optional>
#include <system_error>

#include "platform/files.h"

namespace Vesk {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// How many bytes of a line are shown before and after the place.
constexpr std::size_t kBefore = 60;
constexpr std::size_t kAfter = 60;

constexpr std::string_view kCut = "...";

struct SourceFiles {
    std::mutex mutex;
    std::vector<std::string> names;
};

SourceFiles& sourceFiles() {
    // Never destroyed: an error may be printed while other statics are being destroyed.
    static auto* files = new SourceFiles;
    return *files;
}

bool continuesCodePoint(char c) noexcept {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80;
}

std::optional<std::string_view> fromLine(std::string_view text, std::size_t number) {
    for (; number > 1; --number) {
        const std::size_t end = text.find('\n');
        if (end == std::string_view::npos) {
            return std::nullopt;
        }
        text.remove_prefix(end + 1);
    }
    return text;
}

std::optional<std::string_view> lineOf(std::string_view text, std::size_t number) {
    const auto rest = fromLine(text, number);
    if (!rest) {
        return std::nullopt;
    }
    std::string_view line = rest->substr(0, rest->find('\n'));
    if (line.ends_with('\r')) {
        line.remove_suffix(1);
    }
    return line;
}

/// The byte at which the code point with that number, counted from 1, starts.
std::size_t byteOf(std::string_view line, std::size_t column) noexcept {
    std::size_t at = 0;
    for (std::size_t left = column - 1; left > 0 && at < line.size(); --left) {
        do {
            ++at;
        } while (at < line.size() && continuesCodePoint(line[at]));
    }
    return at;
}

/// The first start of a code point at or after a byte.
std::size_t codePointFrom(std::string_view line, std::size_t at) noexcept {
    while (at < line.size() && continuesCodePoint(line[at])) {
        ++at;
    }
    return std::min(at, line.size());
}

}  // namespace

std::uint32_t sourceFileNumber(const std::string& name) {
    SourceFiles& files = sourceFiles();
    const std::lock_guard lock(files.mutex);
    files.names.push_back(name);
    return static_cast<std::uint32_t>(files.names.size());
}

std::vector<std::string> placeLines(std::string_view fileName, std::string_view text,
                                    std::size_t line, std::size_t column) {
    std::vector<std::string> lines{fmt::format("{}:{}:{}", fileName, line, column)};
    const auto source = lineOf(text, line);
    if (!source || column == 0) {
        return lines;
    }
    const std::size_t at = byteOf(*source, column);
    const std::size_t from = at > kBefore ? codePointFrom(*source, at - kBefore) : 0;
    const std::size_t to = codePointFrom(*source, at + kAfter);
    std::string caret(from > 0 ? kCut.size() : 0, ' ');
    for (const char c : source->substr(from, at - from)) {
        if (!continuesCodePoint(c)) {
            caret += c == '\t' ? '\t' : ' ';
        }
    }
    lines.push_back(fmt::format("{}{}{}", from > 0 ? kCut : "", source->substr(from, to - from),
                                to < source->size() ? kCut : ""));
    lines.push_back(caret + "^");
    return lines;
}

std::string_view textFrom(std::string_view text, std::size_t line, std::size_t column) {
    const auto rest = fromLine(text, line);
    return rest && column > 0 ? rest->substr(byteOf(*rest, column)) : std::string_view();
}

std::string sourceFileName(std::uint32_t number) {
    SourceFiles& files = sourceFiles();
    const std::lock_guard lock(files.mutex);
    return number == 0 || number > files.names.size() ? std::string() : files.names[number - 1];
}

std::vector<std::string> placeLines(const SourcePlace& place) {
    const std::string name = sourceFileName(place.file);
    if (name.empty()) {
        return {};
    }
    std::error_code ignored;
    const auto bytes = platform::readWholeFile(platform::pathFromUtf8(name), ignored);
    std::string_view text = bytes ? std::string_view(*bytes) : std::string_view();
    if (text.starts_with(kByteOrderMark)) {
        text.remove_prefix(kByteOrderMark.size());
    }
    return placeLines(name, text, place.line, place.column);
}

}  // namespace Vesk
