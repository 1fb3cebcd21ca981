#include "platform/files.h"

#include <algorithm>
#include <utility>
#include <windows.h>

#include "platform/recording.h"
#include "platform/windows/extended_path.h"
#include "platform/windows/handle.h"
#include "platform/windows/owner_only.h"
#include "platform/windows/wide.h"

namespace Vesk::platform {

namespace {

// One call of the system moves at most this much.
constexpr std::size_t kMaxPiece = std::size_t{1} << 30;

constexpr std::size_t kPieceBytes = std::size_t{64} * 1024;

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

std::error_code lastError() noexcept {
    return {static_cast<int>(::GetLastError()), std::system_category()};
}

/// Reads to the end into `content`, which has the expected size plus one byte: the extra byte lets
/// the end be found with the second read, without growing. False with the system's error set.
bool readToEnd(HANDLE file, std::string& content, std::size_t maxBytes) {
    std::size_t filled = 0;
    for (;;) {
        if (filled > maxBytes) {
            ::SetLastError(ERROR_FILE_TOO_LARGE);
            return false;
        }
        if (filled == content.size()) {
            content.resize(content.size() * 2 + 4096);
        }
        DWORD count = 0;
        const auto piece = static_cast<DWORD>(std::min(content.size() - filled, kMaxPiece));
        if (!::ReadFile(file, content.data() + filled, piece, &count, nullptr) &&
            ::GetLastError() != ERROR_BROKEN_PIPE) {
            return false;
        }
        if (count == 0) {
            content.resize(filled);
            return true;
        }
        filled += count;
    }
}

bool writeAll(HANDLE file, std::string_view bytes) noexcept {
    while (!bytes.empty()) {
        const auto piece = static_cast<DWORD>(std::min(bytes.size(), kMaxPiece));
        DWORD count = 0;
        if (!::WriteFile(file, bytes.data(), piece, &count, nullptr)) {
            return false;
        }
        bytes.remove_prefix(count);
    }
    return true;
}

bool isReadOnly(const std::wstring& path) noexcept {
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
}

std::int64_t ticksOf(FILETIME time) noexcept {
    return static_cast<std::int64_t>(time.dwHighDateTime) * (std::int64_t{1} << 32) +
           time.dwLowDateTime;
}

/// Ticks are of 100 nanoseconds, since 1601.
std::int64_t unixNanoseconds(std::int64_t ticks) noexcept {
    constexpr std::int64_t kTicksTo1970 = 116'444'736'000'000'000;
    return (ticks - kTicksTo1970) * 100;
}

FileStatus statusFrom(const BY_HANDLE_FILE_INFORMATION& information) noexcept {
    const bool directory = (information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    return {
        directory,
        !directory,
        (static_cast<std::uint64_t>(information.nFileSizeHigh) << 32) | information.nFileSizeLow,
        unixNanoseconds(ticksOf(information.ftLastWriteTime)),
        0,
        information.dwVolumeSerialNumber,
        (static_cast<std::uint64_t>(information.nFileIndexHigh) << 32) | information.nFileIndexLow};
}

/// A name that leads through a file, or to a drive without a disk, is that of nothing as well.
bool isMissing(DWORD error) noexcept {
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ||
           error == ERROR_INVALID_NAME || error == ERROR_BAD_NETPATH ||
           error == ERROR_BAD_NET_NAME || error == ERROR_NOT_READY || error == ERROR_INVALID_DRIVE;
}

std::optional<FileStatus> statusOf(const std::filesystem::path& path, std::error_code& error) {
    error.clear();
    // Opened, not asked by name: a link leads to its file, and only a handle tells the change time.
    const Handle file(::CreateFileW(extendedPath(path).c_str(), FILE_READ_ATTRIBUTES, kShareAll,
                                    nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    if (!file.valid()) {
        if (!isMissing(::GetLastError())) {
            error = lastError();
        }
        return std::nullopt;
    }
    BY_HANDLE_FILE_INFORMATION information{};
    if (::GetFileType(file.get()) != FILE_TYPE_DISK ||
        !::GetFileInformationByHandle(file.get(), &information)) {
        return FileStatus{};  // a device or a pipe
    }
    FileStatus status = statusFrom(information);
    FILE_BASIC_INFO times{};
    if (::GetFileInformationByHandleEx(file.get(), FileBasicInfo, &times, sizeof times)) {
        status.changedNanoseconds = unixNanoseconds(times.ChangeTime.QuadPart);
    }
    return status;
}

/// Notes a status that is asked for along with something else.
void noteStatusOf(const std::filesystem::path& path) {
    if (isRecording()) {
        std::error_code error;
        recordStatus(path, statusOf(path, error), error);
    }
}

/// Opens for reading what is a regular file, or else gives an invalid handle and sets `error`.
/// Asked with a handle that reads nothing first: to read from a device can mean to wait.
HANDLE openToRead(const std::filesystem::path& path, DWORD flags, std::error_code& error) {
    const auto status = statusOf(path, error);
    if (status && !status->regular) {
        error = status->directory ? std::make_error_code(std::errc::is_a_directory)
                                  : std::error_code(ERROR_NOT_SUPPORTED, std::system_category());
        return INVALID_HANDLE_VALUE;
    }
    const HANDLE file = ::CreateFileW(extendedPath(path).c_str(), GENERIC_READ, kShareAll, nullptr,
                                      OPEN_EXISTING, flags, nullptr);
    error = file == INVALID_HANDLE_VALUE ? lastError() : std::error_code();
    return file;
}

HANDLE openToWrite(const std::filesystem::path& path, Append append) {
    const bool adds = append == Append::yes;
    return ::CreateFileW(extendedPath(path).c_str(), adds ? FILE_APPEND_DATA : GENERIC_WRITE,
                         kShareAll, nullptr, adds ? OPEN_ALWAYS : CREATE_ALWAYS,
                         FILE_ATTRIBUTE_NORMAL, nullptr);
}

/// Opens the link itself, if there is one, to refuse it. Truncates only what is known to be a file.
HANDLE openPrivate(const std::filesystem::path& path, Append append) {
    const OwnerOnly owner;
    const bool adds = append == Append::yes;
    Handle file(::CreateFileW(extendedPath(path).c_str(),
                              adds ? FILE_APPEND_DATA | FILE_READ_ATTRIBUTES : GENERIC_WRITE,
                              kShareAll, owner.attributes(), OPEN_ALWAYS,
                              FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    BY_HANDLE_FILE_INFORMATION information{};
    if (!file.valid() || !::GetFileInformationByHandle(file.get(), &information)) {
        return INVALID_HANDLE_VALUE;
    }
    if ((information.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        ::SetLastError(ERROR_CANT_ACCESS_FILE);
        return INVALID_HANDLE_VALUE;
    }
    return adds || ::SetEndOfFile(file.get()) ? file.release() : INVALID_HANDLE_VALUE;
}

/// A file that nobody else can have open or can have put there.
HANDLE openNewPrivate(const std::filesystem::path& path) {
    const OwnerOnly owner;
    const std::wstring name = extendedPath(path);
    if (!::DeleteFileW(name.c_str()) && ::GetLastError() != ERROR_FILE_NOT_FOUND) {
        return INVALID_HANDLE_VALUE;
    }
    return ::CreateFileW(name.c_str(), GENERIC_WRITE, kShareAll, owner.attributes(), CREATE_NEW,
                         FILE_ATTRIBUTE_NORMAL, nullptr);
}

bool writeAndClose(HANDLE handle, std::string_view bytes, std::error_code& error) {
    recordSideEffect();
    Handle file(handle);
    if (!file.valid() || !writeAll(file.get(), bytes) || !file.close()) {
        error = lastError();
        return false;
    }
    error.clear();
    return true;
}

}  // namespace

std::filesystem::path pathFromUtf8(std::string_view text) {
    return {toWide(text)};
}

std::string pathToUtf8(const std::filesystem::path& path) {
    return fromWide(path.native());
}

std::optional<std::string> readWholeFile(const std::filesystem::path& path, std::error_code& error,
                                         std::size_t maxBytes) {
    noteStatusOf(path);
    const Handle file(openToRead(path, FILE_ATTRIBUTE_NORMAL, error));
    BY_HANDLE_FILE_INFORMATION information{};
    if (!file.valid() || !::GetFileInformationByHandle(file.get(), &information)) {
        error = error ? error : lastError();
        return std::nullopt;
    }
    const FileStatus status = statusFrom(information);
    if (status.size > maxBytes) {
        error = std::make_error_code(std::errc::file_too_large);
        return std::nullopt;
    }
    std::string content(static_cast<std::size_t>(status.size) + 1, '\0');
    if (!readToEnd(file.get(), content, maxBytes)) {
        error = ::GetLastError() == ERROR_FILE_TOO_LARGE
                    ? std::make_error_code(std::errc::file_too_large)
                    : lastError();
        return std::nullopt;
    }
    return content;
}

std::optional<std::string> readStart(const std::filesystem::path& path, std::size_t maxBytes,
                                     std::error_code& error) {
    noteStatusOf(path);
    const Handle file(openToRead(path, FILE_ATTRIBUTE_NORMAL, error));
    if (!file.valid()) {
        return std::nullopt;
    }
    std::string content(maxBytes, '\0');
    DWORD count = 0;
    if (!::ReadFile(file.get(), content.data(), static_cast<DWORD>(maxBytes), &count, nullptr)) {
        error = lastError();
        return std::nullopt;
    }
    content.resize(count);
    return content;
}

bool readPieces(const std::filesystem::path& path,
                const std::function<void(std::string_view)>& take) {
    noteStatusOf(path);
    thread_local std::string buffer(kPieceBytes, '\0');
    std::error_code ignored;
    const Handle file(openToRead(path, FILE_FLAG_SEQUENTIAL_SCAN, ignored));
    DWORD count = 0;
    while (file.valid() && ::ReadFile(file.get(), buffer.data(), static_cast<DWORD>(kPieceBytes),
                                      &count, nullptr)) {
        if (count == 0) {
            return true;
        }
        take({buffer.data(), count});
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
    const std::wstring source = extendedPath(from);
    const std::wstring target = extendedPath(to);
    if (isReadOnly(target)) {
        error = std::make_error_code(std::errc::permission_denied);
        return false;
    }
    // Virus scanners and indexers hold a fresh file open for moments.
    constexpr int kAttempts = 10;
    constexpr DWORD kPauseMilliseconds = 20;
    for (int attempt = 1;; ++attempt) {
        if (::MoveFileExW(source.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING)) {
            return true;
        }
        error = lastError();
        const bool held =
            error.value() == ERROR_SHARING_VIOLATION || error.value() == ERROR_ACCESS_DENIED;
        if (!held || attempt == kAttempts) {
            return false;
        }
        ::Sleep(kPauseMilliseconds);
    }
}

std::optional<FileStatus> statusAt(const char* path, std::error_code& error) {
    return statusOf(pathFromUtf8(path), error);
}

std::optional<FileStatus> fileStatus(const std::filesystem::path& path) {
    std::error_code error;
    const std::optional<FileStatus> status = statusOf(path, error);
    recordStatus(path, status, error);
    return status;
}

std::int64_t fileClock() noexcept {
    FILETIME now{};
    ::GetSystemTimeAsFileTime(&now);
    return unixNanoseconds(ticksOf(now));
}

FileWriter::FileWriter(const std::filesystem::path& path, Append append, Access access)
    : handle_(reinterpret_cast<std::intptr_t>(  // INVALID_HANDLE_VALUE is kNone
          access == Access::common ? openToWrite(path, append) : openNewPrivate(path))) {
    if (!isOpen()) {
        error_ = lastError();
    }
    recordSideEffect();
}

FileWriter::~FileWriter() {
    close();
}

bool FileWriter::write(std::string_view bytes) noexcept {
    if (isOpen() && writeAll(reinterpret_cast<HANDLE>(handle_), bytes)) {
        return true;
    }
    error_ = lastError();
    return false;
}

bool FileWriter::close() noexcept {
    if (!isOpen() || ::CloseHandle(reinterpret_cast<HANDLE>(std::exchange(handle_, kNone)))) {
        return true;
    }
    error_ = lastError();
    return false;
}

}  // namespace Vesk::platform
