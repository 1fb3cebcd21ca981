#include "platform/directories.h"

#include <mutex>
#include <utility>

#include "platform/files.h"
#include "platform/recording.h"

namespace Vesk::platform {

namespace fs = std::filesystem;

namespace {

struct Made {
    std::mutex mutex;
    std::vector<fs::path> directories;
};

Made made;

}  // namespace

std::vector<DirectoryEntry> listDirectory(const fs::path& directory, std::error_code& error) {
    std::vector<DirectoryEntry> entries;
    fs::directory_iterator at(directory, error);
    while (!error && at != fs::directory_iterator()) {
        DirectoryEntry entry;
        entry.name = pathToUtf8(at->path().filename());
        const fs::file_status status = at->status(entry.error);
        if (status.type() != fs::file_type::none) {
            entry.error.clear();
        }
        entry.directory = fs::is_directory(status);
        entry.file = fs::is_regular_file(status);
        std::error_code ignored;
        entry.link = at->is_symlink(ignored);
        entries.push_back(std::move(entry));
        at.increment(error);
    }
    if (isRecording()) {
        record(Question::Entries, pathToUtf8(directory), digestOfEntries(entries, error));
    }
    return entries;
}

std::uint64_t digestOfEntries(const std::vector<DirectoryEntry>& entries,
                              const std::error_code& error) {
    std::string text = std::to_string(error.value());
    for (const DirectoryEntry& entry : entries) {
        text += '\0';
        text += entry.name;
        text += entry.directory ? 'd' : entry.file ? 'f' : 'o';
        text += entry.link ? 'l' : '-';
    }
    return digestOf(std::string_view(text));
}

void makeDirectories(const fs::path& directory, std::error_code& error) {
    error.clear();
    if (isDirectory(directory)) {
        return;
    }
    recordSideEffect();
    std::vector<fs::path> missing;
    for (fs::path at = directory; !at.empty() && !isDirectory(at); at = at.parent_path()) {
        if (at.has_filename()) {  // "a/" has none, and is "a"
            missing.push_back(at);
        }
        if (at == at.parent_path()) {
            break;
        }
    }
    fs::create_directories(directory, error);
    const std::lock_guard lock(made.mutex);
    for (auto at = missing.rbegin(); !error && at != missing.rend(); ++at) {
        std::error_code ignored;
        made.directories.push_back(fs::absolute(*at, ignored));
    }
}

std::vector<fs::path> takeMadeDirectories() {
    const std::lock_guard lock(made.mutex);
    return std::exchange(made.directories, {});
}

bool removeEmptyDirectory(const fs::path& directory, std::error_code& error) {
    recordSideEffect();
    error.clear();
    std::error_code ignored;
    return fs::is_directory(fs::symlink_status(directory, ignored)) &&
           fs::is_empty(directory, error) && !error && fs::remove(directory, error);
}

void removeTree(const fs::path& path, std::error_code& error) {
    recordSideEffect();
    fs::remove_all(path, error);
}

}  // namespace Vesk::platform
