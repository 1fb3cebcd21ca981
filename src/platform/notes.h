// How the functions of this floor note what they are asked (see questions.h).
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "platform/files.h"
#include "platform/registry.h"
#include "platform/system.h"

namespace Vesk::platform {

enum class Question : char {
    Status = 's',     ///< of a file or folder
    Times = 't',      ///< of a directory: when its entries last changed
    Entries = 'e',    ///< of a folder
    Canonical = 'c',  ///< where a path leads to
    Variable = 'v',   ///< of the environment
    Month = 'm',
    Registry = 'r',
};

/// Whether questions are noted. Ask before putting together what to note.
bool notesAreTaken() noexcept;

/// An answer is noted by its digest. Both may be called from any thread.
void note(Question question, std::string_view subject, std::uint64_t answer);

/// The run has done something, or has asked what cannot be noted: it cannot be repeated.
void noteDeed() noexcept;

/// Notes the status of a path, which is being examined for whatever reason. `error` as
/// `fileStatus` sets it.
void noteStatus(const std::filesystem::path& path, const std::optional<FileStatus>& status,
                const std::error_code& error);
void noteStatus(const std::string& path, const std::optional<FileStatus>& status,
                const std::error_code& error);

/// The same for a value of the registry.
void noteRegistry(std::string_view key, std::string_view name, RegistryView view,
                  const std::optional<std::string>& text);

std::uint64_t digestOf(std::string_view text) noexcept;
std::uint64_t digestIfAny(const std::optional<std::string>& text) noexcept;
std::uint64_t digestOf(const LocalMonth& month) noexcept;

/// `fileStatus` for a path in UTF-8 that ends with a zero, without a note.
std::optional<FileStatus> statusAt(const char* path, std::error_code& error);

}  // namespace Vesk::platform
