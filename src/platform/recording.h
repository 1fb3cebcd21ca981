// How the functions of this floor record what they are asked (see recorder.h).
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/files.h"
#include "platform/registry.h"
#include "platform/system.h"

namespace Vesk::platform {

enum class Question : char {
    Status = 's',     ///< of a file or directory
    Content = 'h',    ///< of a file: the lower half of its XXH3 hash of 128 bits
    Times = 't',      ///< of a directory: when its entries last changed
    Entries = 'e',    ///< of a directory
    Canonical = 'c',  ///< where a path leads to
    Variable = 'v',   ///< of the environment
    Month = 'm',
    Registry = 'r',
};

/// Whether a recording goes on. Ask before putting together what to record.
bool isRecording() noexcept;

/// An answer is recorded by its digest. Both may be called from any thread.
void record(Question question, std::string_view subject, std::uint64_t answer);

/// The run has done something, or has asked what cannot be recorded: it cannot be repeated.
void recordSideEffect() noexcept;

/// Records the status of a path, which is being examined for whatever reason. `error` as
/// `fileStatus` sets it.
void recordStatus(const std::filesystem::path& path, const std::optional<FileStatus>& status,
                  const std::error_code& error);
void recordStatus(const std::string& path, const std::optional<FileStatus>& status,
                  const std::error_code& error);

/// The same for a value of the registry.
void recordRegistry(std::string_view key, std::string_view name, RegistryView view,
                    const std::optional<std::string>& text);

/// A question as it stands in a recording: its letter, the answer's digest, the subject, a zero.
std::string questionBytes(Question question, std::string_view subject, std::uint64_t answer);

/// Hands over each question of a recording. False for bytes that are none.
bool eachQuestion(std::string_view recording, const std::function<void(std::string_view)>& take);

/// `error` as `fileStatus` sets it.
std::uint64_t digestOfStatus(const std::optional<FileStatus>& status,
                             const std::error_code& error) noexcept;
std::uint64_t digestOf(std::string_view text) noexcept;
std::uint64_t digestIfAny(const std::optional<std::string>& text) noexcept;
std::uint64_t digestOf(const LocalMonth& month) noexcept;

/// `fileStatus` for a path in UTF-8 that ends with a zero, without recording it.
std::optional<FileStatus> statusAt(const char* path, std::error_code& error);

}  // namespace Vesk::platform
