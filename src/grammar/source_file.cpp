#include "grammar/source_file.h"

#include <algorithm>
#include <fmt/format.h>
#include <optional>
#include <system_error>
#include <utility>

#include "base/exception.h"
#include "base/text.h"
#include "grammar/loaders.h"
#include "grammar/utf8.h"
#include "platform/files.h"

namespace Vesk {

namespace {

std::string reasonOf(const std::error_code& error) {
    if (error == std::errc::is_a_directory) {
        return "it is a directory, not a file";
    }
    if (error == std::errc::file_too_large) {
        return fmt::format("it is larger than {} MiB, so it is not a file written for vesk",
                           kMaxFileBytes / (1024 * 1024));
    }
    const std::string text =
        error.message();  // some systems end it with a full stop and a line end
    std::string_view reason = trimmed(text);
    while (reason.ends_with('.')) {
        reason.remove_suffix(1);
    }
    return std::string(reason);
}

}  // namespace

SourceFile::SourceFile(const std::filesystem::path& path) : name_(platform::pathToUtf8(path)) {
    std::error_code error;
    std::optional<std::string> bytes = platform::readWholeFile(path, error, kMaxFileBytes);
    if (bytes) {
        bytes_ = std::move(*bytes);
        return;
    }
    failure_ = reasonOf(error);
    missing_ = error == std::errc::no_such_file_or_directory;
}

std::string_view SourceFile::uncheckedText() const noexcept {
    std::string_view text = bytes_;
    if (text.starts_with(kByteOrderMark)) {
        text.remove_prefix(kByteOrderMark.size());
    }
    return text;
}

std::string_view SourceFile::text() const {
    const std::string_view text = uncheckedText();
    if (const std::size_t nul = text.find('\0'); nul != std::string_view::npos) {
        refuse(text, nul, "a NUL byte: this is not a text file, or one saved as UTF-16");
    }
    if (!isAscii(text)) {
        if (const std::size_t good = wellFormedUtf8(text); good < text.size()) {
            refuse(text, good,
                   fmt::format("the byte 0x{:02X} is not UTF-8 here",
                               static_cast<unsigned>(static_cast<unsigned char>(text[good]))));
        }
    }
    return text;
}

void SourceFile::refuse(std::string_view text, std::size_t offset, std::string_view why) const {
    const std::string_view before = text.substr(0, offset);
    const auto line = 1 + std::count(before.begin(), before.end(), '\n');
    const std::string_view lineStart = before.substr(before.rfind('\n') + 1);
    const auto column = std::count_if(lineStart.begin(), lineStart.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0U) != 0x80;  // not inside a sequence
    });
    throw VeskException(
        fmt::format("{}({},{}): {}. Save the file as UTF-8.", name_, line, column, why));
}

}  // namespace Vesk
