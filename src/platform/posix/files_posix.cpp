#include "platform/files.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <utility>

#include "platform/posix/descriptor.h"
#include "platform/recording.h"

namespace Vesk::platform {

namespace {

constexpr std::size_t kPieceBytes = std::size_t{64} * 1024;

std::error_code lastError() noexcept {
    return {errno, std::generic_category()};
}

constexpr mode_t kCommonMode = 0666;
constexpr mode_t kPrivateMode = 0600;

int openRetrying(const std::filesystem::path& path, int flags, mode_t mode = kCommonMode) noexcept {
    for (;;) {
        const int descriptor = ::open(path.c_str(), flags | O_CLOEXEC, mode);
        if (descriptor >= 0 || errno != EINTR) {
            return descriptor;
        }
    }
}

/// The same path from the current directory, if it lies below: the system looks up fewer names
/// then, which is a fifth of what it does for a status. vesk never changes its current directory.
const char* fromHere(const char* path) noexcept {
    static const std::string here = [] {
        std::error_code unknown;
        const std::string directory = std::filesystem::current_path(unknown).native();
        return directory.ends_with('/') ? directory : directory + "/";
    }();
    if (here.size() == 1 || std::strncmp(path, here.c_str(), here.size()) != 0) {
        return path;
    }
    const char* const rest = path + here.size();
    return *rest != '\0' && *rest != '/' ? rest : path;
}

/// Opens for reading what is a regular file; a directory fails like one. Asked before it is opened,
/// as opening a pipe already shows at its other end, and after, as it may be another one by then.
int openToRead(const std::filesystem::path& path, struct stat& status) noexcept {
    const auto refused = [&status] {
        if (S_ISREG(status.st_mode)) {
            return false;
        }
        errno = S_ISDIR(status.st_mode) ? EISDIR : ENOTSUP;
        return true;
    };
    if (::stat(path.c_str(), &status) != 0 || refused()) {
        return -1;
    }
    Descriptor file(openRetrying(path, O_RDONLY | O_NONBLOCK | O_NOCTTY));
    if (!file.valid() || ::fstat(file.get(), &status) != 0 || refused()) {
        return -1;
    }
    return file.release();
}

/// Reads to the end into `content`, which has the expected size plus one byte: the extra byte lets
/// the end be found with the second read, without growing. False with errno set on failure.
bool readToEnd(int descriptor, std::string& content, std::size_t maxBytes) {
    std::size_t filled = 0;
    for (;;) {
        if (filled > maxBytes) {
            errno = EFBIG;
            return false;
        }
        if (filled == content.size()) {
            content.resize(content.size() * 2 + 4096);
        }
        const ssize_t count = ::read(descriptor, content.data() + filled, content.size() - filled);
        if (count == 0) {
            content.resize(filled);
            return true;
        }
        if (count > 0) {
            filled += static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            return false;
        }
    }
}

std::int64_t nanoseconds(const struct timespec& time) noexcept {
    constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
    return time.tv_sec * kNanosecondsPerSecond + time.tv_nsec;
}

FileStatus statusFrom(const struct stat& status) noexcept {
    return {S_ISDIR(status.st_mode),
            S_ISREG(status.st_mode),
            static_cast<std::uint64_t>(status.st_size),
            nanoseconds(status.st_mtim),
            nanoseconds(status.st_ctim),
            static_cast<std::uint64_t>(status.st_dev),
            static_cast<std::uint64_t>(status.st_ino)};
}

/// Notes a status that is asked for along with something else.
void noteStatusOf(const std::filesystem::path& path) {
    if (isRecording()) {
        std::error_code error;
        recordStatus(path, statusAt(path.c_str(), error), error);
    }
}

/// A name that leads through a file is that of nothing as well.
bool isMissing(int error) noexcept {
    return error == ENOENT || error == ENOTDIR;
}

int openToWrite(const std::filesystem::path& path, Append append) noexcept {
    return openRetrying(path, O_WRONLY | O_CREAT | (append == Append::yes ? O_APPEND : O_TRUNC));
}

/// Truncates only when it is known to be a file of ours.
int openPrivate(const std::filesystem::path& path, Append append) noexcept {
    Descriptor file(openRetrying(
        path, O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | (append == Append::yes ? O_APPEND : 0),
        kPrivateMode));
    struct stat status {};
    if (!file.valid() || ::fstat(file.get(), &status) != 0) {
        return -1;
    }
    if (!S_ISREG(status.st_mode)) {
        errno = ENOTSUP;
        return -1;
    }
    return append == Append::yes || ::ftruncate(file.get(), 0) == 0 ? file.release() : -1;
}

/// A file that nobody else can have open or can have put there.
int openNewPrivate(const std::filesystem::path& path) noexcept {
    if (::unlink(path.c_str()) != 0 && errno != ENOENT) {
        return -1;
    }
    return openRetrying(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, kPrivateMode);
}

bool writeAll(int descriptor, std::string_view bytes) noexcept {
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

bool writeAndClose(int descriptor, std::string_view bytes, std::error_code& error) noexcept {
    recordSideEffect();
    Descriptor file(descriptor);
    if (!file.valid() || !writeAll(file.get(), bytes) || !file.close()) {
        error = lastError();
        return false;
    }
    error.clear();
    return true;
}

}  // namespace

std::filesystem::path pathFromUtf8(std::string_view text) {
    return {text};
}

std::string pathToUtf8(const std::filesystem::path& path) {
    return path.native();
}

std::optional<std::string> readWholeFile(const std::filesystem::path& path, std::error_code& error,
                                         std::size_t maxBytes) {
    error.clear();
    struct stat status {};
    const Descriptor file(openToRead(path, status));
    if (!file.valid()) {
        error = lastError();
        noteStatusOf(path);
        return std::nullopt;
    }
    recordStatus(path, statusFrom(status), error);
    const auto size = static_cast<std::size_t>(status.st_size);
    if (size > maxBytes) {
        error = std::make_error_code(std::errc::file_too_large);
        return std::nullopt;
    }
    std::string content(size + 1, '\0');
    if (!readToEnd(file.get(), content, maxBytes)) {
        error = lastError();
        return std::nullopt;
    }
    return content;
}

std::optional<std::string> readStart(const std::filesystem::path& path, std::size_t maxBytes,
                                     std::error_code& error) {
    error.clear();
    noteStatusOf(path);
    struct stat status {};
    const Descriptor file(openToRead(path, status));
    if (!file.valid()) {
        error = lastError();
        return std::nullopt;
    }
    std::string content(maxBytes, '\0');
    std::size_t filled = 0;
    while (filled < maxBytes) {
        const ssize_t count = ::read(file.get(), content.data() + filled, maxBytes - filled);
        if (count > 0) {
            filled += static_cast<std::size_t>(count);
        } else if (count == 0) {
            break;
        } else if (errno != EINTR) {
            error = lastError();
            return std::nullopt;
        }
    }
    content.resize(filled);
    return content;
}

bool readPieces(const std::filesystem::path& path,
                const std::function<void(std::string_view)>& take) {
    noteStatusOf(path);
    thread_local std::string buffer(kPieceBytes, '\0');
    struct stat status {};
    const Descriptor file(openToRead(path, status));
    while (file.valid()) {
        const ssize_t count = ::read(file.get(), buffer.data(), buffer.size());
        if (count > 0) {
            take({buffer.data(), static_cast<std::size_t>(count)});
        } else if (count == 0 || errno != EINTR) {
            return count == 0;
        }
    }
    return false;
}

bool writeWholeFile(const std::filesystem::path& path, std::string_view bytes, Append append,
                    std::error_code& error) {
    return writeAndClose(openToWrite(path, append), bytes, error);
}

bool writePrivateFile(const std::filesystem::path& path, std::string_view bytes, Append append,
                      std::error_code& error) {
    return writeAndClose(openPrivate(path, append), bytes, error);
}

bool replaceFile(const std::filesystem::path& from, const std::filesystem::path& to,
                 std::error_code& error) {
    error.clear();
    recordSideEffect();
    struct stat status {};
    if (::stat(to.c_str(), &status) == 0 && (status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0) {
        error = std::make_error_code(std::errc::permission_denied);
        return false;
    }
    if (std::rename(from.c_str(), to.c_str()) != 0) {
        error = lastError();
        return false;
    }
    return true;
}

std::optional<FileStatus> statusAt(const char* path, std::error_code& error) {
    error.clear();
    struct stat status {};
    if (::stat(fromHere(path), &status) == 0) {
        return statusFrom(status);
    }
    if (!isMissing(errno)) {
        error = lastError();
    }
    return std::nullopt;
}

std::optional<FileStatus> fileStatus(const std::filesystem::path& path) {
    return fileStatus(path.native());
}

std::int64_t fileClock() noexcept {
    struct timespec now {};
#ifdef CLOCK_REALTIME_COARSE
    ::clock_gettime(CLOCK_REALTIME_COARSE, &now);  // what the kernel stamps files with
#else
    ::clock_gettime(CLOCK_REALTIME, &now);
#endif
    return nanoseconds(now);
}

FileWriter::FileWriter(const std::filesystem::path& path, Append append, Access access)
    : handle_(access == Access::common ? openToWrite(path, append) : openNewPrivate(path)) {
    if (!isOpen()) {
        error_ = lastError();
    }
    recordSideEffect();
}

FileWriter::~FileWriter() {
    close();
}

bool FileWriter::write(std::string_view bytes) noexcept {
    if (isOpen() && writeAll(static_cast<int>(handle_), bytes)) {
        return true;
    }
    error_ = lastError();
    return false;
}

bool FileWriter::close() noexcept {
    if (!isOpen() || ::close(static_cast<int>(std::exchange(handle_, kNone))) == 0) {
        return true;
    }
    error_ = lastError();
    return false;
}

}  // namespace Vesk::platform
