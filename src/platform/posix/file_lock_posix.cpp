#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>

#include "platform/files.h"
#include "platform/interrupt.h"
#include "platform/notes.h"
#include "platform/posix/descriptor.h"

namespace Vesk::platform {

namespace {

[[noreturn]] void fail(const char* what, const std::filesystem::path& path) {
    throw std::system_error(errno, std::generic_category(),
                            std::string(what) + " '" + pathToUtf8(path) + "'");
}

}  // namespace

FileLock::FileLock(const std::filesystem::path& path, const std::function<void()>& onWait)
    : handle_(-1) {
    Descriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666));
    if (!file.valid()) {
        fail("Unable to open lock file", path);
    }
    int result = ::flock(file.get(), LOCK_EX | LOCK_NB);
    if (result != 0 && errno == EWOULDBLOCK) {
        noteDeed();  // the next run need not wait
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
