#include "project/unit_file_walk.h"

#include <algorithm>
#include <deque>
#include <unordered_set>

#include "base/ci_string.h"
#include "platform/directories.h"
#include "platform/files.h"
#include "project/project.h"
#include "project/project_paths.h"

namespace Vesk {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void throwWalkError(const char* operation, const fs::path& path, std::error_code why) {
    throw fs::filesystem_error(std::string("directory_") + operation, path, why);
}

std::vector<platform::DirectoryEntry> entriesOf(const fs::path& directory) {
    std::error_code error;
    std::vector<platform::DirectoryEntry> entries = platform::listDirectory(directory, error);
    if (error) {
        throwWalkError("iterator::directory_iterator", directory, error);
    }
    std::ranges::sort(entries, {}, &platform::DirectoryEntry::name);
    return entries;
}

class UnitFileWalk {
  public:
    explicit UnitFileWalk(const fs::path& root) : rootIdentity_(fileIdentity(root)) {
        directories_.push_back(root);
    }

    std::vector<fs::path> run() {
        // Links come after all real directories, so that a file reached both ways is listed by
        // where it really is.
        while (!directories_.empty() || !links_.empty()) {
            if (!directories_.empty()) {
                const fs::path directory = std::move(directories_.back());
                directories_.pop_back();
                visit(directory);
                continue;
            }
            fs::path link = std::move(links_.front());
            links_.pop_front();
            if (!holdsRoot(link)) {
                directories_.push_back(std::move(link));
            }
        }
        return std::move(files_);
    }

  private:
    void visit(const fs::path& directory) {
        if (!visited_.insert(fileIdentity(directory)).second) {
            return;
        }
        const std::size_t before = directories_.size();
        for (const platform::DirectoryEntry& entry : entriesOf(directory)) {
            fs::path path = directory / platform::pathFromUtf8(entry.name);
            if (entry.error) {
                throwWalkError("entry::status", path, entry.error);
            }
            if (entry.directory) {
                auto& found = entry.link ? links_ : directories_;
                found.push_back(std::move(path));
            } else if (entry.file && equalsIgnoringCase(entry.name, kUnitFileName)) {
                files_.push_back(std::move(path));
            }
        }
        // The stack gives back the last first.
        std::reverse(directories_.begin() + static_cast<std::ptrdiff_t>(before),
                     directories_.end());
    }

    /// Whether the link leads to a directory above the root: following it would walk over
    /// everything around the project, and over the project again.
    bool holdsRoot(const fs::path& link) const {
        const std::string target = fileIdentity(link);
        return rootIdentity_.starts_with(target) &&
               (target.size() == rootIdentity_.size() || target.back() == '/' ||
                rootIdentity_[target.size()] == '/' || rootIdentity_[target.size()] == '\\');
    }

    std::string rootIdentity_;
    std::deque<fs::path> directories_;
    std::deque<fs::path> links_;
    std::unordered_set<std::string> visited_;
    std::vector<fs::path> files_;
};

}  // namespace

std::vector<fs::path> findUnitFiles(const fs::path& root) {
    return UnitFileWalk(root).run();
}

}  // namespace Vesk
