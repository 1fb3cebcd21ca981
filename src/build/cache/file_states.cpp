#include "build/cache/file_states.h"

#include <algorithm>
#include <atomic>
#include <future>

namespace Vesk {
namespace {

constexpr std::int64_t kMillisecond = 1'000'000;
constexpr std::int64_t kSecond = 1000 * kMillisecond;

/// When the file last changed. The modification time is whatever somebody has set it to, so it
/// counts only where the system has no other.
std::int64_t lastChange(const platform::FileStatus& status) {
    return status.changedNanoseconds != 0 ? status.changedNanoseconds : status.modifiedNanoseconds;
}

/// How far apart two changes can be and still carry the same time. File systems that count in
/// seconds (FAT in two) give themselves away by round numbers; elsewhere it is the system's tick.
std::int64_t resolutionOf(const platform::FileStatus& status) {
    return lastChange(status) % kSecond == 0 ? 3 * kSecond : 30 * kMillisecond;
}

bool isRecent(const platform::FileStatus& status) {
    return lastChange(status) + resolutionOf(status) > platform::fileClock();
}

bool isFile(FileState::Kind kind) {
    return kind == FileState::Kind::File || kind == FileState::Kind::Recent;
}

bool sameTimes(const platform::FileStatus& status, const FileState& state) {
    return status.size == state.size && status.modifiedNanoseconds == state.modified &&
           status.changedNanoseconds == state.changed;
}

bool sameStatus(const platform::FileStatus& a, const platform::FileStatus& b) {
    return a.directory == b.directory && a.size == b.size &&
           a.modifiedNanoseconds == b.modifiedNanoseconds &&
           a.changedNanoseconds == b.changedNanoseconds;
}

}  // namespace

void FileStates::examine(Entry& entry, const std::filesystem::path& file) {
    const bool made = entry.made;
    entry = Entry();
    entry.made = made;
    entry.examined = true;
    entry.examinedAt = platform::fileClock();
    const auto status = platform::fileStatus(file);
    if (!status) {
        return;
    }
    entry.status = *status;
    if (status->directory) {
        entry.kind = FileState::Kind::Directory;
    } else if (isRecent(*status)) {
        // Its times will not tell of a change in this moment, so the content is taken down now.
        entry.kind = FileState::Kind::Recent;
        read(entry, file);
    } else {
        entry.kind = FileState::Kind::File;
    }
}

void FileStates::read(Entry& entry, const std::filesystem::path& file) {
    if (entry.hashed || entry.torn || !isFile(entry.kind)) {
        return;
    }
    const auto hash = hashFile(file);
    const auto status = platform::fileStatus(file);
    if (hash && status && sameStatus(*status, entry.status)) {
        entry.hash = *hash;
        entry.hashed = true;
    } else {
        entry.torn = true;
    }
}

FileStates::Entry& FileStates::examined(std::string_view path) {
    auto found = entries_.find(path);
    if (found == entries_.end()) {
        found = entries_.emplace(std::string(path), Entry()).first;
    }
    if (!found->second.examined) {
        examine(found->second, platform::pathFromUtf8(path));
    }
    return found->second;
}

FileState FileStates::stateOf(Entry& entry, const std::filesystem::path& file) {
    read(entry, file);
    FileState state;
    state.kind = entry.torn ? FileState::Kind::Unknown : entry.kind;
    if (isFile(state.kind)) {
        state.size = entry.status.size;
        state.modified = entry.status.modifiedNanoseconds;
        state.changed = entry.status.changedNanoseconds;
        state.hash = entry.hash;
    }
    return state;
}

FileStates::Comparison FileStates::compare(std::string_view path, const FileState& stored) {
    const std::lock_guard lock(mutex_);
    Entry& entry = examined(path);
    if (entry.kind == FileState::Kind::Missing) {
        return stored.kind == FileState::Kind::Missing ? Comparison::Same : Comparison::Missing;
    }
    if (!isFile(stored.kind) || !isFile(entry.kind)) {
        return stored.kind == entry.kind ? Comparison::Same : Comparison::Changed;
    }
    if (entry.status.size != stored.size) {
        return Comparison::Changed;
    }
    if (stored.kind == FileState::Kind::File && sameTimes(entry.status, stored)) {
        if (!entry.hashed) {
            entry.hash = stored.hash;
            entry.hashed = true;
            entry.kind = FileState::Kind::File;
        }
        return entry.hash == stored.hash ? Comparison::Same : Comparison::Changed;
    }
    read(entry, platform::pathFromUtf8(path));
    const bool same = entry.hashed && entry.hash == stored.hash;
    return same ? Comparison::SameContent : Comparison::Changed;
}

FileState FileStates::current(std::string_view path) {
    const std::lock_guard lock(mutex_);
    return stateOf(examined(path), platform::pathFromUtf8(path));
}

/// Whether the file has changed since the build first looked at it, or while it was read by
/// commands before anybody had looked.
bool FileStates::changedMeanwhile(const Entry& entry, const std::filesystem::path& file,
                                  std::int64_t startedAt) {
    if (entry.examinedAt > startedAt && !entry.made) {
        return isFile(entry.kind) && lastChange(entry.status) >= startedAt;
    }
    const auto status = platform::fileStatus(file);
    if (!status || status->directory != entry.status.directory) {
        return true;
    }
    if (status->directory) {
        return false;
    }
    return !sameStatus(*status, entry.status) ||
           (entry.kind == FileState::Kind::Recent && hashFile(file) != entry.hash);
}

FileState FileStates::afterReading(std::string_view path, std::int64_t startedAt) {
    const std::lock_guard lock(mutex_);
    const std::filesystem::path file = platform::pathFromUtf8(path);
    Entry& entry = examined(path);
    if (entry.kind == FileState::Kind::Missing) {
        examine(entry, file);  // one of the commands may have made it
        return stateOf(entry, file);
    }
    const bool changed = changedMeanwhile(entry, file, startedAt);
    FileState state = stateOf(entry, file);
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
    Entry& entry = entries_[std::string(path)];
    entry = Entry();
    entry.made = true;
}

bool FileStates::settle(std::string_view path, FileState& state) {
    const std::filesystem::path file = platform::pathFromUtf8(path);
    const auto status = platform::fileStatus(file);
    if (state.kind != FileState::Kind::Recent || !status || !sameTimes(*status, state) ||
        isRecent(*status) || hashFile(file) != state.hash) {
        return false;
    }
    state.kind = FileState::Kind::File;
    return true;
}

void FileStates::readAhead(const std::vector<std::string>& paths, unsigned workers) {
    std::vector<std::pair<Entry*, const std::string*>> unread;
    const std::lock_guard lock(mutex_);  // held throughout: the entries belong to the workers now
    for (const std::string& path : paths) {
        Entry& entry = entries_[path];
        if (!entry.hashed && !entry.torn) {
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
            const std::filesystem::path file = platform::pathFromUtf8(*unread[i].second);
            if (!entry.examined) {
                examine(entry, file);
            }
            read(entry, file);
        }
    };
    std::vector<std::future<void>> others;
    for (unsigned i = 1; i < workers && i < unread.size(); ++i) {
        others.push_back(std::async(std::launch::async, work));
    }
    work();
}

}  // namespace Vesk
