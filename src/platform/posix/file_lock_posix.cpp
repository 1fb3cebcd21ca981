#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>

#include "platform/files.h"
#include "platform/interrupt.h"
#include "platform/posix/descriptor.h"
#include "platform/recording.h"

namespace Vesk::platform {

namespace {

[[noreturn]] void fail(const char* what, const std::filesystem::path& path) {
    throw std::system_error(errno, std::generic_category(),
                            std::string(what) + " '" + pathToUtf8(path) + "'");
}

/// The lock of another user may be there for reading only, which is enough for the system.
int openLockFile(const std::filesystem::path& path) noexcept {
    constexpr int kFlags = O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
    int file = ::open(path.c_str(), O_RDWR | kFlags, 0666);
    if (const int reason = errno; file < 0) {
        file = ::open(path.c_str(), O_RDONLY | (kFlags & ~O_CREAT));
        errno = reason;
    }
    return file;
}

}  // namespace

FileLock::FileLock(const std::filesystem::path& path, const std::function<void()>& onWait) {
    Descriptor file(openLockFile(path));
    if (!file.valid()) {
        fail("Unable to open lock file", path);
    }
    int result = ::flock(file.get(), LOCK_EX | LOCK_NB);
    if (result != 0 && errno == EWOULDBLOCK) {
        recordSideEffect();  // the next run need not wait
        if (onWait) {
            onWait();
        }
        do {
            result = ::flock(file.get(), LOCK_EX);
        } while (result != 0 && errno == EINTR && interruptSignal() == 0);
    }
    if (result != 0) {
        fail("Unable to lock file", path);
    }
    handle_ = file.release();
}

FileLock::~FileLock() {
    ::close(static_cast<int>(handle_));
}

}  // namespace Vesk::platform
