#include "platform/console.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace Vesk::platform {

void prepareConsole() {
    // A standard stream that is closed would lend its number to the next file we open, and messages
    // would end up in that file.
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) == -1 && errno == EBADF) {
            ::open("/dev/null", O_RDWR);
        }
    }
    // A reader that goes away must not kill a build before its results are saved.
    std::signal(SIGPIPE, SIG_IGN);
}

bool writeBytes(Stream stream, std::string_view bytes) noexcept {
    const int descriptor = stream == Stream::Output ? STDOUT_FILENO : STDERR_FILENO;
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            // Somebody who shares the terminal or pipe made it non-blocking.
            pollfd ready{descriptor, POLLOUT, 0};
            ::poll(&ready, 1, -1);
        } else if (errno == EPIPE) {
            return true;
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

std::size_t readInput(char* buffer, std::size_t size) noexcept {
    while (true) {
        const ssize_t count = ::read(STDIN_FILENO, buffer, size);
        if (count >= 0) {
            return static_cast<std::size_t>(count);
        }
        if (errno == EAGAIN || errno == EWOULDBLOCK) {
            pollfd ready{STDIN_FILENO, POLLIN, 0};
            ::poll(&ready, 1, -1);
        } else if (errno != EINTR) {
            return 0;
        }
    }
}

std::optional<unsigned> terminalWidth(Stream stream) noexcept {
    constexpr unsigned kUsual = 80;
    const int descriptor = stream == Stream::Output ? STDOUT_FILENO : STDERR_FILENO;
    if (::isatty(descriptor) == 0) {
        return std::nullopt;
    }
    winsize size{};
    const bool known = ::ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col != 0;
    return known ? size.ws_col : kUsual;
}

}  // namespace Vesk::platform
