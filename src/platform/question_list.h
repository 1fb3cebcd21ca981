// Questions about files whose answers are known from elsewhere, put together for `stillValid`.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/files.h"

namespace Vesk::platform {

/// Each question is listed once, however often it is added. Where one was added with two answers,
/// both are listed, and the list is never valid.
class QuestionList {
  public:
    /// The place of a question in the list, counted from zero.
    using Number = std::uint32_t;

    /// From now on the number of each question that is added also goes to `numbers`; null: to
    /// nobody.
    void collect(std::vector<Number>* numbers) noexcept { collected_ = numbers; }

    /// Makes room for so many, of so many bytes.
    void reserve(std::size_t count, std::size_t bytes);

    /// How many there are.
    std::size_t size() const noexcept { return numbers_.size(); }

    /// One as it stands in another recording. Returns its number.
    Number addQuestion(std::string_view question);

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

    std::string recording_;
    std::unordered_map<Digest, Number, DigestHash> numbers_;  ///< by question, with its answer
    std::vector<Number>* collected_ = nullptr;
};

}  // namespace Vesk::platform
