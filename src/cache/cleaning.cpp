#include "cache/cleaning.h"

#include <map>
#include <optional>
#include <system_error>
#include <unordered_map>
#include <unordered_set>

#include "cache/record_files.h"
#include "platform/directories.h"
#include "platform/files.h"

namespace Vesk {
namespace {

class Cleaner {
  public:
    Cleaner(ProjectCache& cache, const CleanOptions& options)
        : cache_(cache), options_(options), records_(cache.records()) {}

    CleanReport clean() {
        readStates();
        const auto entries = cache_.made().entries();
        for (const auto& [path, entry] : entries) {
            if (entry.kind != MadeFiles::Kind::Directory && options_.concerns(entry)) {
                cleanFile(path, entry);
            }
        }
        // The contents of a directory are listed after it.
        for (auto each = entries.rbegin(); !options_.dryRun && each != entries.rend(); ++each) {
            if (each->second.kind == MadeFiles::Kind::Directory) {
                cleanDirectory(each->first);
            }
        }
        dropRecords();
        return std::move(report_);
    }

  private:
    void readStates() {
        for (const auto& [key, record] : records_) {
            for (const RecordFile& file : filesWritten(record)) {
                states_[key].try_emplace(std::string(file.path), file.state);
            }
        }
    }

    /// The state of the file when its target had made it, if known.
    std::optional<FileState> stateOf(const std::string& path, const MadeFiles::Entry& entry) const {
        if (entry.kind == MadeFiles::Kind::Former) {
            return entry.state;
        }
        const auto record = states_.find(entry.key);
        if (record == states_.end()) {
            return std::nullopt;
        }
        const auto state = record->second.find(path);
        return state == record->second.end() ? std::nullopt : std::optional(state->second);
    }

    /// Why the file has to stay; empty if it may be removed.
    std::string faultOf(const std::string& path, const MadeFiles::Entry& entry) {
        if (entry.kind == MadeFiles::Kind::ByProduct ||
            entry.kind == MadeFiles::Kind::FormerByProduct || options_.force) {
            return {};
        }
        const std::optional<FileState> state = stateOf(path, entry);
        if (!state) {
            return "it is not known whether it has changed since vesk made it";
        }
        switch (cache_.states().compare(cache_.root().absolute(path), *state)) {
            case FileStates::Comparison::Same:
            case FileStates::Comparison::SameContent:
                return {};
            case FileStates::Comparison::Changed:
            case FileStates::Comparison::Missing:
                break;
        }
        return "it has changed since vesk made it";
    }

    void cleanFile(const std::string& path, const MadeFiles::Entry& entry) {
        const std::filesystem::path file = platform::pathFromUtf8(cache_.root().absolute(path));
        std::error_code error;
        if (platform::isDirectory(file)) {
            removeDirectory(path);  // an output that is a directory
        } else if (!platform::exists(file, error) && !error) {
            forget(path);
        } else if (std::string why = faultOf(path, entry); !why.empty()) {
            leave(path, entry, std::move(why));
        } else if (!options_.dryRun && !platform::removeFile(file, error) && error) {
            leave(path, entry, error.message());
        } else {
            report_.files.push_back(path);
            forget(path);
        }
    }

    void cleanDirectory(const std::string& path) {
        const std::filesystem::path directory =
            platform::pathFromUtf8(cache_.root().absolute(path));
        if (platform::isDirectory(directory)) {
            removeDirectory(path);
        } else {
            forget(path);
        }
    }

    void removeDirectory(const std::string& path) {
        std::error_code error;
        if (!options_.dryRun && platform::removeEmptyDirectory(
                                    platform::pathFromUtf8(cache_.root().absolute(path)), error)) {
            report_.directories.push_back(path);
            forget(path);
        }
    }

    void leave(const std::string& path, const MadeFiles::Entry& entry, std::string why) {
        report_.left.push_back({path, std::move(why)});
        keysLeft_.insert(entry.key);
    }

    void forget(const std::string& path) {
        if (!options_.dryRun) {
            cache_.made().remove(path);
        }
    }

    void dropRecords() {
        for (const auto& [key, record] : records_) {
            if (!options_.dryRun && !keysLeft_.contains(key) &&
                options_.concerns({MadeFiles::Kind::Output, key, {}})) {
                cache_.forget(key);
            }
        }
    }

    ProjectCache& cache_;
    const CleanOptions& options_;
    std::vector<std::pair<std::string, RecordText>> records_;
    std::unordered_map<std::string, std::map<std::string, FileState, std::less<>>> states_;
    std::unordered_set<std::string> keysLeft_;
    CleanReport report_;
};

}  // namespace

CleanReport clean(ProjectCache& cache, const CleanOptions& options) {
    return Cleaner(cache, options).clean();
}

}  // namespace Vesk
