// Folders: what is in them, making and removing them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "platform/files.h"

namespace Vesk::platform {

/// What a folder holds. Of a link, what it leads to.
struct FolderEntry {
    std::string name;  ///< without the folder, UTF-8
    bool folder = false;
    bool file = false;  ///< a regular one
    bool link = false;
    std::error_code error;  ///< why the system does not tell what it is
};

/// All entries but "." and "..", in the system's order. `error` is set when the folder cannot be
/// read to its end; what was read until then is returned.
std::vector<FolderEntry> listFolder(const std::filesystem::path& folder, std::error_code& error);

/// A number that another outcome of `listFolder` would not have.
std::uint64_t digestOfEntries(const std::vector<FolderEntry>& entries,
                              const std::error_code& error);

/// The caller has seen by the times of a directory that it holds what it held before: a run can be
/// repeated for as long as they stay the same.
void noteTimes(const std::string& directory, const FileStatus& status);

/// Makes the folder and those above it. One that is there is no error.
void makeFolders(const std::filesystem::path& folder, std::error_code& error);

/// Removes a folder with all that is in it, or a file. One that is not there is no error.
void removeTree(const std::filesystem::path& path, std::error_code& error);

}  // namespace Vesk::platform
