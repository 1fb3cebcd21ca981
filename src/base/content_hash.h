// Hashes by which texts and files are told apart.
#pragma once

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace Vesk {

/// 128 bits of XXH3.
struct ContentHash {
    std::uint64_t high = 0;
    std::uint64_t low = 0;

    bool operator==(const ContentHash&) const = default;
};

/// Reads the file. Nothing if it cannot be read to its end.
std::optional<ContentHash> hashFile(const std::filesystem::path& path);

/// Hashes the pieces as if they were one text.
ContentHash hashText(std::initializer_list<std::string_view> pieces);
inline ContentHash hashText(std::string_view text) {
    return hashText({text});
}

/// 32 hexadecimal digits.
std::string digits(const ContentHash& hash);

}  // namespace Vesk
