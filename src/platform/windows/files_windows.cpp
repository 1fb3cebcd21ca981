#include "platform/files.h"

#include <algorithm>
#include <utility>
#include <windows.h>

#include "platform/notes.h"
#include "platform/windows/extended_path.h"
#include "platform/windows/handle.h"
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
        directory, !directory,
        (static_cast<std::uint64_t>(information.nFileSizeHigh) << 32) | information.nFileSizeLow,
        unixNanoseconds(ticksOf(information.ftLastWriteTime)), 0};
}

std::optional<FileStatus> statusOf(const std::filesystem::path& path) {
    // Opened, not asked by name: a link leads to its file, and only a handle tells the change time.
    const Handle file(::CreateFileW(extendedPath(path).c_str(), FILE_READ_ATTRIBUTES, kShareAll,
                                    nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    BY_HANDLE_FILE_INFORMATION information{};
    if (!file.valid() || !::GetFileInformationByHandle(file.get(), &information)) {
        return std::nullopt;
    }
    FileStatus status = statusFrom(information);
    FILE_BASIC_INFO times{};
    if (::GetFileInformationByHandleEx(file.get(), FileBasicInfo, &times, sizeof times)) {
        status.changedNanoseconds = unixNanoseconds(times.ChangeTime.QuadPart);
    }
    return status;
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
    error.clear();
    if (notesAreTaken()) {
        noteStatus(path, statusOf(path));
    }
    // Backup semantics open directories as well, so that they can be told from unreadable files.
    const Handle file(::CreateFileW(extendedPath(path).c_str(), GENERIC_READ, kShareAll, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    if (!file.valid()) {
        error = lastError();
        return std::nullopt;
    }
    BY_HANDLE_FILE_INFORMATION information{};
    // Devices and pipes give no information and have no size in advance.
    const bool isFile = ::GetFileInformationByHandle(file.get(), &information) != 0;
    const FileStatus status = isFile ? statusFrom(information) : FileStatus{};
    if (status.directory) {
        error = std::make_error_code(std::errc::is_a_directory);
        return std::nullopt;
    }
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
    error.clear();
    if (notesAreTaken()) {
        noteStatus(path, statusOf(path));
    }
    const Handle file(::CreateFileW(extendedPath(path).c_str(), GENERIC_READ, kShareAll, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    std::string content(maxBytes, '\0');
    DWORD count = 0;
    if (!file.valid() ||
        !::ReadFile(file.get(), content.data(), static_cast<DWORD>(maxBytes), &count, nullptr)) {
        error = lastError();
        return std::nullopt;
    }
    content.resize(count);
    return content;
}

bool readPieces(const std::filesystem::path& path,
                const std::function<void(std::string_view)>& take) {
    if (notesAreTaken()) {
        noteStatus(path, statusOf(path));
    }
    thread_local std::string buffer(kPieceBytes, '\0');
    const Handle file(::CreateFileW(extendedPath(path).c_str(), GENERIC_READ, kShareAll, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
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
    error.clear();
    noteDeed();
    const bool adds = append == Append::yes;
    Handle file(::CreateFileW(extendedPath(path).c_str(), adds ? FILE_APPEND_DATA : GENERIC_WRITE,
                              kShareAll, nullptr, adds ? OPEN_ALWAYS : CREATE_ALWAYS,
                              FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.valid() || !writeAll(file.get(), bytes) || !file.close()) {
        error = lastError();
        return false;
    }
    return true;
}

bool replaceFile(const std::filesystem::path& from, const std::filesystem::path& to,
                 std::error_code& error) {
    error.clear();
    noteDeed();
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

std::optional<FileStatus> statusAt(const char* path) {
    return statusOf(pathFromUtf8(path));
}

std::optional<FileStatus> fileStatus(const std::filesystem::path& path) {
    const std::optional<FileStatus> status = statusOf(path);
    noteStatus(path, status);
    return status;
}

std::int64_t fileClock() noexcept {
    FILETIME now{};
    ::GetSystemTimeAsFileTime(&now);
    return unixNanoseconds(ticksOf(now));
}

FileWriter::FileWriter(const std::filesystem::path& path, Append append) {
    noteDeed();
    const bool adds = append == Append::yes;
    const HANDLE file = ::CreateFileW(
        extendedPath(path).c_str(), adds ? FILE_APPEND_DATA : GENERIC_WRITE, kShareAll, nullptr,
        adds ? OPEN_ALWAYS : CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    handle_ = reinterpret_cast<std::intptr_t>(file);  // INVALID_HANDLE_VALUE is kNone
    if (!isOpen()) {
        error_ = lastError();
    }
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
