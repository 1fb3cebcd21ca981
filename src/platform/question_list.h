// Questions about files whose answers are known from elsewhere, put together for `stillValid`.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>

#include "platform/files.h"

namespace Vesk::platform {

/// Each question is listed once, however often it is added. Where one was added with two answers,
/// both are listed, and the list is never valid.
class QuestionList {
  public:
    /// The path, in UTF-8, has this status, or nothing is there. A status is taken as it is, even
    /// of a file that was written a moment ago.
    void addStatus(const std::string& path, const std::optional<FileStatus>& status);

    /// The same, with the status that it has now.
    void addStatusNow(const std::filesystem::path& path);

    /// The file has this content: the lower half of its XXH3 hash of 128 bits. For a file whose
    /// times do not tell.
    void addContent(std::string_view path, std::uint64_t hash);

    /// All that was asked elsewhere. False for bytes that are no recording.
    bool add(std::string_view recording);

    /// All questions, as bytes for `stillValid`.
    const std::string& recording() const noexcept { return recording_; }

  private:
    struct Digest {
        std::uint64_t high = 0;
        std::uint64_t low = 0;

        bool operator==(const Digest&) const = default;
    };
    struct DigestHash {
        std::size_t operator()(const Digest& digest) const noexcept {
            return static_cast<std::size_t>(digest.low);
        }
    };

    void addOnce(std::string_view question);

    std::string recording_;
    std::unordered_set<Digest, DigestHash> known_;  ///< of each question, with its answer
};

}  // namespace Vesk::platform
