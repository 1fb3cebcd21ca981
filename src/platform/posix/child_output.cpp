#include "platform/posix/child_output.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <termios.h>
#include <utility>

namespace Vesk::platform {

namespace {

constexpr std::size_t kBufferSize = std::size_t{64} * 1024;

// How often a system that does not tell of a child's end is asked for it.
constexpr int kAskMilliseconds = 10;

// A terminal hands over what was written to it only after a moment.
constexpr int kTerminalMilliseconds = 30;

// More than the system keeps for us of what a child has written; whoever writes more after the
// child's end is not the child.
constexpr std::size_t kMostAfterEnd = std::size_t{1024} * 1024;

int descriptorOf(Stream stream) noexcept {
    return stream == Stream::Output ? STDOUT_FILENO : STDERR_FILENO;
}

bool leadToSamePlace() noexcept {
    struct stat output {};
    struct stat error {};
    return ::fstat(STDOUT_FILENO, &output) == 0 && ::fstat(STDERR_FILENO, &error) == 0 &&
           output.st_dev == error.st_dev && output.st_ino == error.st_ino;
}

/// As wide as the real one, and without carriage returns before the line ends.
void shapeTerminal(int descriptor, int like) noexcept {
    winsize size{};
    if (::ioctl(like, TIOCGWINSZ, &size) == 0) {
        ::ioctl(descriptor, TIOCSWINSZ, &size);
    }
    termios settings{};
    if (::tcgetattr(descriptor, &settings) == 0) {
        settings.c_oflag &= ~static_cast<tcflag_t>(OPOST);
        ::tcsetattr(descriptor, TCSANOW, &settings);
    }
}

std::pair<int, int> openTerminal(int like) {
    Descriptor ours(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    if (!ours.valid() || ::grantpt(ours.get()) != 0 || ::unlockpt(ours.get()) != 0) {
        return {-1, -1};
    }
    std::array<char, 128> name{};
    if (::ptsname_r(ours.get(), name.data(), name.size()) != 0) {
        return {-1, -1};
    }
    const int theirs = ::open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (theirs < 0) {
        return {-1, -1};
    }
    shapeTerminal(theirs, like);
    return {ours.release(), theirs};
}

std::pair<int, int> openPipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        return {-1, -1};
    }
    return {ends[0], ends[1]};
}

/// A descriptor that is readable once the child has ended; -1 where the system has none.
int endOf(pid_t child) noexcept {
#ifdef SYS_pidfd_open
    return static_cast<int>(::syscall(SYS_pidfd_open, child, 0));
#else
    static_cast<void>(child);
    return -1;
#endif
}

bool hasEnded(pid_t child) noexcept {
    siginfo_t info{};
    return ::waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT | WNOHANG) != 0 ||
           info.si_pid != 0;
}

}  // namespace

bool ChildOutput::add(Stream stream) {
    const int like = descriptorOf(stream);
    bool isTerminal = ::isatty(like) != 0;
    std::pair<int, int> ends = isTerminal ? openTerminal(like) : openPipe();
    if (isTerminal && ends.first < 0) {
        isTerminal = false;
        ends = openPipe();
    }
    if (ends.first < 0) {
        return false;
    }
    ::fcntl(ends.first, F_SETFL, O_NONBLOCK);
    channels_.push_back({stream, Descriptor(ends.first), Descriptor(ends.second), isTerminal});
    return true;
}

bool ChildOutput::open() {
    channels_.reserve(2);
    return add(Stream::Output) && (leadToSamePlace() || add(Stream::Error));
}

int ChildOutput::theirEnd(Stream stream) const noexcept {
    return (stream == Stream::Output ? channels_.front() : channels_.back()).theirs.get();
}

bool ChildOutput::anyOpen() const noexcept {
    for (const Channel& channel : channels_) {
        if (channel.ours.valid()) {
            return true;
        }
    }
    return false;
}

/// Waits until something can be read, or `ended` can, and reads it. False when nothing was read.
bool ChildOutput::readReady(int timeoutMilliseconds, int ended, const OutputSink& sink) {
    std::vector<pollfd> waited;
    for (const Channel& channel : channels_) {
        waited.push_back({channel.ours.get(), POLLIN, 0});  // one that is closed is -1: left out
    }
    waited.push_back({ended, POLLIN, 0});
    if (::poll(waited.data(), waited.size(), timeoutMilliseconds) <= 0) {
        return false;
    }
    bool any = false;
    for (std::size_t i = 0; i < channels_.size(); ++i) {
        if (waited[i].revents == 0) {
            continue;
        }
        const ssize_t count = ::read(channels_[i].ours.get(), buffer_.data(), buffer_.size());
        if (count > 0) {
            sink(channels_[i].stream,
                 std::string_view(buffer_).substr(0, static_cast<std::size_t>(count)));
            any = true;
        } else if (count == 0 || (errno != EINTR && errno != EAGAIN)) {
            channels_[i].ours.close();  // a terminal that nobody has open gives an error
        }
    }
    return any;
}

/// What the child had written when it ended. Processes that it has left behind may keep the other
/// end open for as long as they like.
void ChildOutput::readLast(const OutputSink& sink) {
    bool terminals = false;
    for (const Channel& channel : channels_) {
        terminals = terminals || channel.isTerminal;
    }
    const int patience = terminals ? kTerminalMilliseconds : 0;
    std::size_t most = kMostAfterEnd / kBufferSize;
    while (anyOpen() && most-- > 0 && readReady(patience, -1, sink)) {}
}

void ChildOutput::read(pid_t child, const OutputSink& sink) {
    for (Channel& channel : channels_) {
        channel.theirs.close();
    }
    buffer_.resize(kBufferSize);
    const Descriptor end(endOf(child));
    while (anyOpen()) {
        readReady(end.valid() ? -1 : kAskMilliseconds, end.get(), sink);
        if (hasEnded(child)) {
            readLast(sink);
            return;
        }
    }
}

}  // namespace Vesk::platform
