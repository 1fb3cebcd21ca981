// Files of the language as the parser needs them: read whole, and text.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace Vesk {

/// The bytes of one file.
class SourceFile {
  public:
    /// Reads the file. One that cannot be read leaves `failure` set.
    explicit SourceFile(const std::filesystem::path& path);

    /// Why the file cannot be read, as the end of a sentence: "Permission denied"; else empty.
    const std::string& failure() const noexcept { return failure_; }
    /// Whether there is no such file, as opposed to one that cannot be read.
    bool missing() const noexcept { return missing_; }

    /// The path as it was given, for messages.
    const std::string& name() const noexcept { return name_; }

    /// The text without byte order mark. Throws VeskException, with the place, for what is no text:
    /// a NUL byte, or bytes that are not UTF-8.
    std::string_view text() const;

  private:
    [[noreturn]] void refuse(std::string_view text, std::size_t offset, std::string_view why) const;

    std::string name_;
    std::string bytes_;
    std::string failure_;
    bool missing_ = false;
};

}  // namespace Vesk
