// Directories: what is in them, making and removing them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "platform/files.h"

namespace Vesk::platform {

/// What a directory holds. Of a link, what it leads to.
struct DirectoryEntry {
    std::string name;  ///< without the directory, UTF-8
    bool directory = false;
    bool file = false;  ///< a regular one
    bool link = false;
    std::error_code error;  ///< why the system does not tell what it is
};

/// All entries but "." and "..", in the system's order. `error` is set when the directory cannot be
/// read to its end; what was read until then is returned.
std::vector<DirectoryEntry> listDirectory(const std::filesystem::path& directory,
                                          std::error_code& error);

/// A number that another outcome of `listDirectory` would not have.
std::uint64_t digestOfEntries(const std::vector<DirectoryEntry>& entries,
                              const std::error_code& error);

/// The caller has seen by the times of a directory that it holds what it held before: a run can be
/// repeated for as long as they stay the same.
void recordTimes(const std::string& directory, const FileStatus& status);

/// Makes the directory and those above it. One that is there is no error.
void makeDirectories(const std::filesystem::path& directory, std::error_code& error);

/// Those that `makeDirectories` has made since the last call, each before what is in it. May be
/// called from any thread.
std::vector<std::filesystem::path> takeMadeDirectories();

/// Removes a directory that is empty, and no link. False for any other, with `error` set where the
/// system refuses.
bool removeEmptyDirectory(const std::filesystem::path& directory, std::error_code& error);

/// Removes a directory with all that is in it, or a file. One that is not there is no error.
void removeTree(const std::filesystem::path& path, std::error_code& error);

}  // namespace Vesk::platform
