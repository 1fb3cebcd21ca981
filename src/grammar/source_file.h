// Files of the language, read whole and checked to be text.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace Vesk {

/// The bytes of one file.
class SourceFile {
  public:
    /// Reads the file. If it cannot be read, `failure` is set.
    explicit SourceFile(const std::filesystem::path& path);

    /// Why the file cannot be read, as the end of a sentence: "Permission denied". Empty if it was
    /// read.
    const std::string& failure() const noexcept { return failure_; }
    /// Whether the file does not exist, as opposed to being unreadable.
    bool missing() const noexcept { return missing_; }

    /// The path as given, for messages.
    const std::string& name() const noexcept { return name_; }

    /// The text without byte order mark, whatever it contains.
    std::string_view uncheckedText() const noexcept;

    /// The text without byte order mark. Throws VeskException, with the place, for what is not
    /// text: a NUL byte, or bytes that are not UTF-8.
    std::string_view text() const;

    /// All of the file.
    const std::string& bytes() const noexcept { return bytes_; }

  private:
    [[noreturn]] void refuse(std::string_view text, std::size_t offset, std::string_view why) const;

    std::string name_;
    std::string bytes_;
    std::string failure_;
    bool missing_ = false;
};

}  // namespace Vesk
