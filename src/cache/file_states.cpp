#include "cache/file_states.h"

#include <algorithm>
#include <atomic>
#include <future>
#include <string>

#include "cache/tracked_path.h"
#include "platform/directories.h"

namespace Vesk {
namespace {

bool isFile(FileState::Kind kind) {
    return kind == FileState::Kind::File || kind == FileState::Kind::Recent;
}

/// Whether it is the same file and nobody has written to it.
bool untouched(const platform::FileStatus& status, const FileState& state) {
    return status.device == state.device && status.number == state.number &&
           (status.directory || status.size == state.size) &&
           status.modifiedNanoseconds == state.modified &&
           status.changedNanoseconds == state.changed;
}

/// How the names of vesk's own files begin, which come and go with every build.
constexpr std::string_view kOwnFiles = ".vesk_cache";

bool sameStatus(const platform::FileStatus& a, const platform::FileStatus& b) {
    return a.directory == b.directory && a.regular == b.regular && a.device == b.device &&
           a.number == b.number && a.size == b.size &&
           a.modifiedNanoseconds == b.modifiedNanoseconds &&
           a.changedNanoseconds == b.changedNanoseconds;
}

}  // namespace

void FileStates::examine(Entry& entry, const std::string& path) {
    const bool builtHere = entry.builtHere;
    entry = Entry();
    entry.builtHere = builtHere;
    entry.examined = true;
    entry.examinedAt = platform::fileClock();
    const bool names = isNamesPath(path);
    std::error_code error;
    const auto status = platform::fileStatus(names ? std::string(directoryOf(path)) : path, error);
    if (!status) {
        entry.kind = error ? FileState::Kind::Unknown : FileState::Kind::Missing;
        return;
    }
    if (names && !status->directory) {
        return;
    }
    entry.status = *status;
    if (names) {
        entry.kind = FileState::Kind::Names;
    } else if (!status->regular) {
        entry.kind = status->directory ? FileState::Kind::Directory : FileState::Kind::Other;
    } else if (platform::isRecent(*status)) {
        // Its times will not reveal a change made in this moment, so the content is hashed now.
        entry.kind = FileState::Kind::Recent;
        read(entry, path);
    } else {
        entry.kind = FileState::Kind::File;
    }
}

void FileStates::readNames(Entry& entry, std::string_view path) {
    const std::filesystem::path directory = platform::pathFromUtf8(directoryOf(path));
    std::error_code error;
    std::vector<std::string> names;
    for (platform::DirectoryEntry& each : platform::listDirectory(directory, error)) {
        if (!each.name.starts_with(kOwnFiles)) {
            names.push_back(std::move(each.name));
        }
    }
    std::ranges::sort(names);
    std::string text;
    for (const std::string& name : names) {
        text.append(name).append(1, '\0');
    }
    entry.hash = hashText(text);
    entry.hashed = !error;
    entry.changedWhileRead = static_cast<bool>(error);
}

void FileStates::read(Entry& entry, std::string_view path) {
    if (entry.kind == FileState::Kind::Names && !entry.hashed && !entry.changedWhileRead) {
        readNames(entry, path);
        return;
    }
    if (entry.hashed || entry.changedWhileRead || !isFile(entry.kind)) {
        return;
    }
    const std::filesystem::path file = platform::pathFromUtf8(path);
    const auto hash = hashFile(file);
    const auto status = platform::fileStatus(file);
    if (hash && status && sameStatus(*status, entry.status)) {
        entry.hash = *hash;
        entry.hashed = true;
    } else {
        entry.changedWhileRead = true;
    }
}

FileStates::Node& FileStates::known(std::string_view path) {
    const auto found = entries_.find(path);
    return found != entries_.end() ? *found : *entries_.emplace(std::string(path), Entry()).first;
}

FileStates::Entry& FileStates::examined(Node& node) {
    if (!node.second.examined) {
        examine(node.second, node.first);
    }
    return node.second;
}

FileStates::Entry& FileStates::examined(std::string_view path) {
    return examined(known(path));
}

FileStates::File FileStates::file(std::string_view path) {
    const std::lock_guard lock(mutex_);
    return File(known(path));
}

FileState FileStates::stateOf(Entry& entry, std::string_view path) {
    read(entry, path);
    FileState state;
    state.kind = entry.changedWhileRead ? FileState::Kind::Unknown : entry.kind;
    if (isFile(state.kind)) {
        state.device = entry.status.device;
        state.number = entry.status.number;
        state.size = entry.status.size;
        state.modified = entry.status.modifiedNanoseconds;
        state.changed = entry.status.changedNanoseconds;
        state.hash = entry.hash;
    } else if (state.kind == FileState::Kind::Names) {
        // Times of this moment will not reveal a further name, and what is not a directory has no
        // names.
        const bool recent = platform::isRecent(entry.status);
        state.device = entry.status.device;
        state.number = entry.status.number;
        state.modified = recent ? 0 : entry.status.modifiedNanoseconds;
        state.changed = recent ? 0 : entry.status.changedNanoseconds;
        state.hash = entry.hash;
    }
    return state;
}

/// Equal times mean equal names. If files come and go in a directory, as the cache's own do, the
/// names are compared.
FileStates::Comparison FileStates::compareNames(Entry& entry, std::string_view path,
                                                const FileState& stored) {
    if (entry.kind != FileState::Kind::Names) {
        return Comparison::Changed;
    }
    if (!entry.hashed && untouched(entry.status, stored)) {
        platform::recordTimes(std::string(directoryOf(path)), entry.status);
        entry.hash = stored.hash;
        entry.hashed = true;
    }
    read(entry, path);
    return entry.hashed && entry.hash == stored.hash ? Comparison::Same : Comparison::Changed;
}

FileStates::Comparison FileStates::compare(std::string_view path, const FileState& stored) {
    const std::lock_guard lock(mutex_);
    return compare(known(path), stored);
}

FileStates::Comparison FileStates::compare(File file, const FileState& stored) {
    const std::lock_guard lock(mutex_);
    return compare(*file.node_, stored);
}

FileStates::Comparison FileStates::compare(Node& node, const FileState& stored) {
    Entry& entry = examined(node);
    const std::string_view path = node.first;
    if (stored.kind == FileState::Kind::Names) {
        return compareNames(entry, path, stored);
    }
    if (entry.kind == FileState::Kind::Missing) {
        return stored.kind == FileState::Kind::Missing ? Comparison::Same : Comparison::Missing;
    }
    if (!isFile(stored.kind) || !isFile(entry.kind)) {
        const bool same = stored.kind == entry.kind && entry.kind != FileState::Kind::Unknown;
        return same ? Comparison::Same : Comparison::Changed;
    }
    if (entry.status.size != stored.size) {
        return Comparison::Changed;
    }
    if (stored.kind == FileState::Kind::File && untouched(entry.status, stored)) {
        if (!entry.hashed) {
            entry.hash = stored.hash;
            entry.hashed = true;
            entry.kind = FileState::Kind::File;
        }
        return entry.hash == stored.hash ? Comparison::Same : Comparison::Changed;
    }
    read(entry, path);
    const bool same = entry.hashed && entry.hash == stored.hash;
    return same ? Comparison::SameContent : Comparison::Changed;
}

void FileStates::assume(std::string_view path, const FileState& state) {
    const std::lock_guard lock(mutex_);
    Entry& entry = known(path).second;
    if (entry.examined || entry.builtHere) {
        return;
    }
    entry.examined = true;
    entry.examinedAt = platform::fileClock();
    entry.kind = state.kind;
    entry.status = statusOf(state);
    entry.hash = state.hash;
    entry.hashed = true;
}

FileState FileStates::current(std::string_view path) {
    const std::lock_guard lock(mutex_);
    return stateOf(examined(path), path);
}

FileState FileStates::current(File file) {
    const std::lock_guard lock(mutex_);
    return stateOf(examined(*file.node_), file.path());
}

bool FileStates::isCurrent(File file, const FileState& stored) {
    const std::lock_guard lock(mutex_);
    const Entry& entry = file.node_->second;
    return stored.kind == FileState::Kind::File && entry.kind == stored.kind && entry.hashed &&
           !entry.changedWhileRead && entry.hash == stored.hash && untouched(entry.status, stored);
}

FileState::Kind FileStates::kindOf(std::string_view path) {
    const std::lock_guard lock(mutex_);
    return examined(path).kind;
}

/// Whether the file changed after the build first looked at it, or while commands read it before
/// anyone had looked.
bool FileStates::changedMeanwhile(const Entry& entry, std::string_view path,
                                  std::int64_t startedAt) {
    if (entry.examinedAt > startedAt && !entry.builtHere) {
        return isFile(entry.kind) && platform::lastChange(entry.status) >= startedAt;
    }
    const std::filesystem::path file = platform::pathFromUtf8(path);
    const auto status = platform::fileStatus(file);
    if (!status || status->regular != entry.status.regular) {
        return true;
    }
    if (!status->regular) {
        return status->directory != entry.status.directory;
    }
    return !sameStatus(*status, entry.status) ||
           (entry.kind == FileState::Kind::Recent && hashFile(file) != entry.hash);
}

FileState FileStates::afterReading(std::string_view path, std::int64_t startedAt) {
    const std::lock_guard lock(mutex_);
    Entry& entry = examined(path);
    if (entry.kind == FileState::Kind::Missing) {
        examine(entry, std::string(path));  // one of the commands may have made it
        return stateOf(entry, path);
    }
    const bool changed = changedMeanwhile(entry, path, startedAt);
    FileState state = stateOf(entry, path);
    if (changed) {
        state.kind = FileState::Kind::Unknown;
    }
    return state;
}

void FileStates::look(const std::vector<std::string>& paths) {
    const std::lock_guard lock(mutex_);
    for (const std::string& path : paths) {
        examined(path);
    }
}

void FileStates::written(std::string_view path) {
    const std::lock_guard lock(mutex_);
    Entry& entry = known(path).second;
    entry = Entry();
    entry.builtHere = true;
    if (const auto names = entries_.find(namesPath(directoryOf(path))); names != entries_.end()) {
        names->second = Entry();
    }
}

void FileStates::writtenBelow(std::string_view directory) {
    const std::lock_guard lock(mutex_);
    for (auto& [path, entry] : entries_) {
        if (isBelow(path, directory)) {
            entry = Entry();
            entry.builtHere = true;
        }
    }
}

bool FileStates::isSettled(std::string_view path, const FileState& state) {
    const std::filesystem::path file = platform::pathFromUtf8(path);
    const auto status = platform::fileStatus(file);
    return state.kind == FileState::Kind::Recent && status && untouched(*status, state) &&
           !platform::isRecent(*status) && hashFile(file) == state.hash;
}

void FileStates::readAhead(const std::vector<std::string>& paths, unsigned workers) {
    std::vector<std::pair<Entry*, const std::string*>> unread;
    const std::lock_guard lock(mutex_);  // held throughout: the workers own the entries now
    for (const std::string& path : paths) {
        Entry& entry = entries_[path];
        if (!entry.hashed && !entry.changedWhileRead) {
            unread.emplace_back(&entry, &path);
        }
    }
    std::ranges::sort(unread);
    unread.erase(std::unique(unread.begin(), unread.end(),
                             [](const auto& a, const auto& b) { return a.first == b.first; }),
                 unread.end());
    std::atomic<std::size_t> next{0};
    const auto work = [&unread, &next] {
        for (std::size_t i = next++; i < unread.size(); i = next++) {
            Entry& entry = *unread[i].first;
            const std::string& path = *unread[i].second;
            if (!entry.examined) {
                examine(entry, path);
            }
            read(entry, path);
        }
    };
    std::vector<std::future<void>> others;
    constexpr std::size_t kFewFiles = 8;  // reading them takes less time than starting a thread
    for (unsigned i = 1; i < workers && i * kFewFiles < unread.size(); ++i) {
        others.push_back(std::async(std::launch::async, work));
    }
    work();
}

}  // namespace Vesk
