#include "platform/files.h"

#include "platform/recording.h"
#include "platform/system.h"

namespace Vesk::platform {

namespace fs = std::filesystem;

namespace {

constexpr std::int64_t kMillisecond = 1'000'000;
constexpr std::int64_t kSecond = 1000 * kMillisecond;

/// How far apart two changes can be and still carry the same time. File systems that count in
/// seconds (FAT in two) give themselves away by round numbers; elsewhere it is the system's tick.
std::int64_t resolutionOf(const FileStatus& status) noexcept {
    return lastChange(status) % kSecond == 0 ? 3 * kSecond : 30 * kMillisecond;
}

bool isLetter(char c) noexcept {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isSlash(char c) noexcept {
    return c == '/' || c == '\\';
}

}  // namespace

bool isAbsolutePath(std::string_view text) noexcept {
    if (text.size() >= 3 && isLetter(text[0]) && text[1] == ':' && isSlash(text[2])) {
        return true;
    }
    if constexpr (kWindows) {
        return text.size() >= 2 && isSlash(text[0]) && isSlash(text[1]);
    } else {
        return !text.empty() && text[0] == '/';
    }
}

std::optional<FileStatus> fileStatus(const std::string& path, std::error_code& error) {
    const std::optional<FileStatus> status = statusAt(path.c_str(), error);
    recordStatus(path, status, error);
    return status;
}

std::optional<FileStatus> fileStatus(const std::string& path) {
    std::error_code ignored;
    return fileStatus(path, ignored);
}

bool isFile(const fs::path& path) {
    const auto status = fileStatus(path);
    return status && status->regular;
}

bool isDirectory(const fs::path& path) {
    const auto status = fileStatus(path);
    return status && status->directory;
}

bool exists(const fs::path& path, std::error_code& error) {
    error.clear();
    return fileStatus(path) || fs::exists(path, error);
}

std::int64_t lastChange(const FileStatus& status) noexcept {
    return status.changedNanoseconds != 0 ? status.changedNanoseconds : status.modifiedNanoseconds;
}

bool isRecent(const FileStatus& status) noexcept {
    return lastChange(status) + resolutionOf(status) > fileClock();
}

fs::path canonicalPath(const fs::path& path, std::error_code& error) {
    fs::path canonical = fs::weakly_canonical(path, error);
    if (isRecording()) {
        record(Question::Canonical, pathToUtf8(path),
               digestOf(std::string_view(pathToUtf8(canonical))));
    }
    return canonical;
}

bool isSameFile(const fs::path& a, const fs::path& b) {
    const auto one = fileStatus(a);
    const auto other = fileStatus(b);
    return one && other && one->device == other->device && one->number == other->number;
}

bool removeFile(const fs::path& path, std::error_code& error) {
    error.clear();
    const bool removed = fs::remove(path, error);
    if (removed || error) {
        recordSideEffect();
    } else {
        recordStatus(path, std::nullopt, error);
    }
    return removed;
}

bool copyFile(const fs::path& from, const fs::path& to, std::error_code& error) {
    recordSideEffect();
    return fs::copy_file(from, to, error);
}

void copyPermissions(const fs::path& from, const fs::path& to) noexcept {
    recordSideEffect();
    std::error_code ignored;
    fs::permissions(to, fs::status(from, ignored).permissions(), ignored);
}

}  // namespace Vesk::platform
