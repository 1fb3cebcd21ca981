// Files and paths where the standard library differs between systems or falls short.
//
// Functions that report through `error` clear it on success. On Windows paths beyond the classic
// length limit work whatever the machine's policy says.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace Vesk::platform {

/// On Windows, bytes that are no UTF-8 become U+FFFD; on POSIX every byte is kept.
std::filesystem::path pathFromUtf8(std::string_view text);
std::string pathToUtf8(const std::filesystem::path& path);

/// True for a path that starts at a root: on POSIX a leading slash, on Windows two leading slashes
/// or backslashes (a network share), on both a drive letter, a colon and a slash or backslash.
bool isAbsolutePath(std::string_view text) noexcept;

/// The whole file as bytes. On failure returns nothing and sets `error`; a directory fails with
/// is_a_directory, a file larger than `maxBytes` with file_too_large. A pipe, a device or a socket
/// is never opened to be read, here and in the next two: it could keep us waiting forever. It fails
/// with operation_not_supported.
std::optional<std::string> readWholeFile(const std::filesystem::path& path, std::error_code& error,
                                         std::size_t maxBytes = SIZE_MAX);

/// The first bytes of a file, at most so many. On failure returns nothing and sets `error`.
std::optional<std::string> readStart(const std::filesystem::path& path, std::size_t maxBytes,
                                     std::error_code& error);

/// Hands over all bytes of a file, piece by piece, in one buffer. False when it cannot be read to
/// its end; only a regular file can.
bool readPieces(const std::filesystem::path& path,
                const std::function<void(std::string_view)>& take);

/// Writes bytes to a file, as they are. False and `error` set when opening, writing or closing
/// fails (a full disk is noticed here). `Append::yes` adds to the end instead of truncating.
enum class Append { no, yes };
bool writeWholeFile(const std::filesystem::path& path, std::string_view bytes, Append append,
                    std::error_code& error);

/// The same for a file of the program's own: when it is new, its owner alone may read it; a link or
/// something else than a regular file in its place is an error.
bool writePrivateFile(const std::filesystem::path& path, std::string_view bytes, Append append,
                      std::error_code& error);

/// Renames `from` over `to` in one step, replacing it; both on one volume. A `to` that is marked
/// read-only is refused (permission_denied) and stays as it is, on POSIX too, where the system
/// itself would replace it.
bool replaceFile(const std::filesystem::path& from, const std::filesystem::path& to,
                 std::error_code& error);

/// Writes a file in pieces; the bytes as they are. `Append` as for `writeWholeFile`.
class FileWriter {
  public:
    enum class Access {
        common,        ///< as the system has it
        newlyPrivate,  ///< as for `writePrivateFile`; what is in its place is removed first
    };

    explicit FileWriter(const std::filesystem::path& path, Append append = Append::no,
                        Access access = Access::common);
    ~FileWriter();
    FileWriter(const FileWriter&) = delete;
    FileWriter& operator=(const FileWriter&) = delete;

    bool isOpen() const noexcept { return handle_ != kNone; }

    /// Both false when the system refuses, a full disk for one. Without effect once closed.
    bool write(std::string_view bytes) noexcept;
    bool close() noexcept;

    /// Why the file could not be opened, or why the last operation failed.
    std::error_code error() const noexcept { return error_; }

  private:
    static constexpr std::intptr_t kNone = -1;
    std::intptr_t handle_ = kNone;
    std::error_code error_;
};

/// What the system tells about a file; links are followed. Times are nanoseconds since 1970-01-01
/// UTC, as fine as the file system is.
struct FileStatus {
    bool directory = false;
    bool regular = false;    ///< neither a directory nor a device, a pipe or the like
    std::uint64_t size = 0;  ///< bytes
    std::int64_t modifiedNanoseconds = 0;
    std::int64_t changedNanoseconds = 0;  ///< also moves when the modification time is put back
    std::uint64_t device = 0;  ///< where it is; on Windows the serial number of the volume
    std::uint64_t number = 0;  ///< which file it is there: no other file has it at the same time
};

/// The time that a file changed now would carry, as far as this machine's clock gives it. In the
/// same units; as coarse as the system's own.
std::int64_t fileClock() noexcept;

/// Nothing when the file does not exist or cannot be examined.
std::optional<FileStatus> fileStatus(const std::filesystem::path& path);

/// The same for a path in UTF-8, for callers that have no other and ask often. `error`, when asked
/// for, is set if the file may exist and the system does not tell.
std::optional<FileStatus> fileStatus(const std::string& path);
std::optional<FileStatus> fileStatus(const std::string& path, std::error_code& error);

/// False when it cannot be examined, like `fileStatus`.
bool isFile(const std::filesystem::path& path);
bool isDirectory(const std::filesystem::path& path);

/// Whether something is there. Sets `error` when the system does not tell.
bool exists(const std::filesystem::path& path, std::error_code& error);

/// Whether the file changed so short a time ago that it can change again and keep its times.
bool isRecent(const FileStatus& status) noexcept;

/// When the file last changed. The modification time is whatever somebody has set it to, so it
/// counts only where the system has no other.
std::int64_t lastChange(const FileStatus& status) noexcept;

/// The path with its links followed and without "." and "..", as far as there is such a file.
std::filesystem::path canonicalPath(const std::filesystem::path& path, std::error_code& error);

/// Whether both are the same file. No if one of them cannot be examined.
bool isSameFile(const std::filesystem::path& a, const std::filesystem::path& b);

/// False when there was none, and with `error` set when it could not be removed.
bool removeFile(const std::filesystem::path& path, std::error_code& error);

/// Copies to a path where nothing is yet. False and `error` set on failure.
bool copyFile(const std::filesystem::path& from, const std::filesystem::path& to,
              std::error_code& error);

/// Gives a file the permissions of another, as far as the system lets us.
void copyPermissions(const std::filesystem::path& from, const std::filesystem::path& to) noexcept;

/// A lock that two processes can compete for, held by the operating system through an open file:
/// it ends with the process whatever way that ends. The file stays behind; its existence means
/// nothing.
class FileLock {
  public:
    /// Takes the lock, waiting as long as it takes. `onWait`, when given, is called once if the
    /// lock is not free at once. A file that may only be read is as good as any; a link in its
    /// place is not followed. Throws std::system_error when the lock file cannot be opened or
    /// locked, and when an interruption (see interrupt.h) ends the waiting.
    explicit FileLock(const std::filesystem::path& path, const std::function<void()>& onWait = {});
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

  private:
    std::intptr_t handle_ = -1;
};

}  // namespace Vesk::platform
