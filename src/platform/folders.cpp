#include "platform/folders.h"

#include "platform/files.h"
#include "platform/notes.h"

namespace Vesk::platform {

namespace fs = std::filesystem;

std::vector<FolderEntry> listFolder(const fs::path& folder, std::error_code& error) {
    std::vector<FolderEntry> entries;
    fs::directory_iterator at(folder, error);
    while (!error && at != fs::directory_iterator()) {
        FolderEntry entry;
        entry.name = pathToUtf8(at->path().filename());
        const fs::file_status status = at->status(entry.error);
        if (status.type() != fs::file_type::none) {
            entry.error.clear();
        }
        entry.folder = fs::is_directory(status);
        entry.file = fs::is_regular_file(status);
        std::error_code ignored;
        entry.link = at->is_symlink(ignored);
        entries.push_back(std::move(entry));
        at.increment(error);
    }
    if (notesAreTaken()) {
        note(Question::Entries, pathToUtf8(folder), digestOfEntries(entries, error));
    }
    return entries;
}

std::uint64_t digestOfEntries(const std::vector<FolderEntry>& entries,
                              const std::error_code& error) {
    std::string text = std::to_string(error.value());
    for (const FolderEntry& entry : entries) {
        text += '\0';
        text += entry.name;
        text += entry.folder ? 'd' : entry.file ? 'f' : 'o';
        text += entry.link ? 'l' : '-';
    }
    return digestOf(std::string_view(text));
}

void makeFolders(const fs::path& folder, std::error_code& error) {
    error.clear();
    if (!isFolder(folder)) {
        noteDeed();
        fs::create_directories(folder, error);
    }
}

void removeTree(const fs::path& path, std::error_code& error) {
    noteDeed();
    fs::remove_all(path, error);
}

}  // namespace Vesk::platform
