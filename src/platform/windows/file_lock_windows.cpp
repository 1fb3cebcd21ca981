#include <windows.h>

#include "platform/files.h"
#include "platform/interrupt.h"
#include "platform/recording.h"
#include "platform/windows/extended_path.h"
#include "platform/windows/handle.h"

namespace Vesk::platform {

namespace {

[[noreturn]] void fail(DWORD code, const char* what, const std::filesystem::path& path) {
    throw std::system_error(static_cast<int>(code), std::system_category(),
                            std::string(what) + " '" + pathToUtf8(path) + "'");
}

/// ERROR_SUCCESS, or why the lock could not be had now; ERROR_LOCK_VIOLATION: somebody has it.
DWORD tryLock(HANDLE file) noexcept {
    OVERLAPPED start{};
    return ::LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &start)
               ? ERROR_SUCCESS
               : ::GetLastError();
}

/// The lock of another user may be there for reading only, which is enough for the system.
HANDLE openLockFile(const std::filesystem::path& path) {
    const std::wstring name = extendedPath(path);
    const auto open = [&name](DWORD access, DWORD disposition) {
        return ::CreateFileW(
            name.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
            disposition, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    };
    HANDLE file = open(GENERIC_READ | GENERIC_WRITE, OPEN_ALWAYS);
    if (const DWORD reason = ::GetLastError(); file == INVALID_HANDLE_VALUE) {
        file = open(GENERIC_READ, OPEN_EXISTING);
        ::SetLastError(reason);
    }
    return file;
}

}  // namespace

FileLock::FileLock(const std::filesystem::path& path, const std::function<void()>& onWait) {
    Handle file(openLockFile(path));
    if (!file.valid()) {
        fail(::GetLastError(), "Unable to open lock file", path);
    }
    DWORD result = tryLock(file.get());
    if (result == ERROR_LOCK_VIOLATION) {
        recordSideEffect();  // the next run need not wait
        if (onWait) {
            onWait();
        }
    }
    // A waiting LockFileEx could not be interrupted, so the lock is asked for again and again.
    constexpr DWORD kPauseMilliseconds = 25;
    while (result == ERROR_LOCK_VIOLATION) {
        if (interruptSignal() != 0) {
            fail(ERROR_CANCELLED, "Unable to lock file", path);
        }
        ::Sleep(kPauseMilliseconds);
        result = tryLock(file.get());
    }
    if (result != ERROR_SUCCESS) {
        fail(result, "Unable to lock file", path);
    }
    handle_ = reinterpret_cast<std::intptr_t>(file.release());
}

FileLock::~FileLock() {
    ::CloseHandle(reinterpret_cast<HANDLE>(handle_));
}

}  // namespace Vesk::platform
