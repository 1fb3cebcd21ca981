#include "tools/support/command_text.h"

#include <algorithm>
#include <fmt/format.h>
#include <xxhash.h>

#include "grammar/utf8.h"
#include "platform/system.h"
#include "run/command_line.h"

namespace Vesk {

namespace {

// The command interpreter of Windows takes 8191 characters; some are reserved for what surrounds
// the text.
constexpr std::size_t kMaxCommandLength = 7000;

constexpr std::string_view kPlainPunctuation = "_@%+=:,./-";
constexpr std::string_view kPlainOnWindows = "_@+=:,./\\-";

// Outside quotes the command interpreter of Windows treats these specially; a caret prevents that.
constexpr std::string_view kWindowsSpecial = "()%!^\"<>&|";

bool isAlphanumeric(char c) noexcept {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
           static_cast<unsigned char>(c) >= 0x80;
}

bool isPlain(std::string_view argument, std::string_view punctuation) noexcept {
    return !argument.empty() && std::ranges::all_of(argument, [punctuation](char c) {
        return isAlphanumeric(c) || punctuation.find(c) != std::string_view::npos;
    });
}

/// Windows programs read a text without a byte order mark in the machine's own code page, and not
/// all of them know UTF-8.
std::string windowsText(const std::string& text) {
    if (isAscii(text)) {
        return text;
    }
    std::string bytes = "\xFF\xFE";
    for (const char16_t unit :
         std::filesystem::path(std::u8string(text.begin(), text.end())).u16string()) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

}  // namespace

std::string quoteForPosix(std::string_view argument) {
    if (isPlain(argument, kPlainPunctuation)) {
        return std::string(argument);
    }
    std::string quoted = "'";
    for (const char c : argument) {
        if (c == '\'') {
            quoted += "'\\''";
        } else {
            quoted += c;
        }
    }
    return quoted += '\'';
}

// The interpreter does not know \" and takes the quotes as closed behind it, and it expands
// variables even inside quotes. If that matters, every special character gets a caret, including
// the quotes, so that the interpreter sees no quotes at all.
std::string quoteForWindows(std::string_view argument) {
    if (isPlain(argument, kPlainOnWindows)) {
        return std::string(argument);
    }
    const std::string quoted = quoteArgument(argument);
    if (argument.find_first_of("\"%") == std::string_view::npos) {
        return quoted;
    }
    std::string escaped;
    for (const char c : quoted) {
        if (kWindowsSpecial.find(c) != std::string_view::npos) {
            escaped += '^';
        }
        escaped += c;
    }
    return escaped;
}

std::string quoteForHost(std::string_view argument) {
    return platform::kWindows ? quoteForWindows(argument) : quoteForPosix(argument);
}

std::string quoteForResponseFile(std::string_view argument, ResponseFiles style) {
    if (style == ResponseFiles::Windows) {
        return isPlain(argument, kPlainOnWindows) ? std::string(argument) : quoteArgument(argument);
    }
    if (isPlain(argument, kPlainPunctuation)) {
        return std::string(argument);
    }
    std::string quoted = "\"";
    for (const char c : argument) {
        if (c == '"' || c == '\\') {
            quoted += '\\';
        }
        quoted += c;
    }
    return quoted += '"';
}

void CommandText::append(std::string_view hostText, std::string_view fileText) {
    text_.append(text_.empty() ? "" : " ").append(hostText);
    if (fileStart_ != std::string::npos) {
        fileText_.append(fileText).append(1, '\n');
    }
}

void CommandText::add(std::string_view argument) {
    // Some versions of the Windows interpreter take this for a variable, and nothing prevents that.
    needsFile_ |= platform::kWindows && argument.find('%') != std::string_view::npos;
    append(quoteForHost(argument), quoteForResponseFile(argument, style_));
}

void CommandText::add(std::string_view option, std::string_view value) {
    add(std::string(option).append(value));
}

void CommandText::add(std::string_view option, const std::vector<std::string>& values) {
    for (const std::string& value : values) {
        add(option, value);
    }
}

void CommandText::addAsWritten(std::string_view text) {
    if (!text.empty()) {
        append(text, text);
    }
}

void CommandText::allowResponseFile() noexcept {
    fileStart_ = text_.size();
    fileText_.clear();
}

void CommandText::finish(Recipe& recipe, const std::filesystem::path& stem,
                         std::string_view stemInCommand) const {
    recipe.command = text_;
    if ((text_.size() <= kMaxCommandLength && !needsFile_) || fileText_.empty()) {
        return;
    }
    const std::string suffix =
        fmt::format(".{:016x}.rsp", XXH3_64bits(fileText_.data(), fileText_.size()));
    recipe.command = text_.substr(0, fileStart_) + " " +
                     quoteForHost("@" + std::string(stemInCommand).append(suffix));
    std::filesystem::path file = stem;
    file += suffix;
    recipe.supportFiles.push_back(
        {std::move(file), style_ == ResponseFiles::Windows ? windowsText(fileText_) : fileText_});
}

}  // namespace Vesk
