#include "platform/process.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <optional>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <system_error>

#include "platform/alarm.h"
#include "platform/interrupt.h"
#include "platform/posix/child_output.h"
#include "platform/posix/children.h"
#include "platform/posix/descriptor.h"
#include "platform/posix/program_search.h"
#include "platform/recording.h"

extern char** environ;  // NOLINT(readability-redundant-declaration): not every libc declares it

namespace Vesk::platform {

namespace {

/// How the child differs from us: the settings that posix_spawn takes.
class SpawnSettings {
  public:
    explicit SpawnSettings(bool ownGroup = childrenHaveOwnGroups()) {
        ::posix_spawn_file_actions_init(&actions_);
        ::posix_spawnattr_init(&attributes_);
        // We ignore SIGPIPE for ourselves (see prepareConsole); in a pipeline of the child's it has
        // to do its work.
        sigset_t defaults;
        ::sigemptyset(&defaults);
        ::sigaddset(&defaults, SIGPIPE);
        ::posix_spawnattr_setsigdefault(&attributes_, &defaults);
        short flags = POSIX_SPAWN_SETSIGDEF;
        if (ownGroup) {
            ::posix_spawnattr_setpgroup(&attributes_, 0);
            flags |= POSIX_SPAWN_SETPGROUP;
        }
        ::posix_spawnattr_setflags(&attributes_, flags);
    }
    ~SpawnSettings() {
        ::posix_spawnattr_destroy(&attributes_);
        ::posix_spawn_file_actions_destroy(&actions_);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    int setWorkingDirectory(const std::filesystem::path& directory) {
        return directory.empty()
                   ? 0
                   : ::posix_spawn_file_actions_addchdir_np(&actions_, directory.c_str());
    }

    int setNoInput() {
        return ::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY,
                                                  0);
    }

    int setStandardOutput(int descriptor) {
        return ::posix_spawn_file_actions_adddup2(&actions_, descriptor, STDOUT_FILENO);
    }

    int setStreams(const ChildOutput& output) {
        const int error = setStandardOutput(output.theirEnd(Stream::Output));
        return error != 0 ? error
                          : ::posix_spawn_file_actions_adddup2(
                                &actions_, output.theirEnd(Stream::Error), STDERR_FILENO);
    }

    /// 0 and `child`, or the system's error code.
    int spawn(const std::vector<std::string>& arguments, char* const* environment,
              pid_t& child) const;

    /// The same for a program file, which need not be called like the first argument.
    int spawnFile(const std::string& file, const std::vector<std::string>& arguments,
                  char* const* environment, pid_t& child) const {
        return ::posix_spawn(&child, file.c_str(), &actions_, &attributes_,
                             pointersTo(arguments).data(), environment);
    }

  private:
    posix_spawn_file_actions_t actions_;
    posix_spawnattr_t attributes_;
};

int SpawnSettings::spawn(const std::vector<std::string>& arguments, char* const* environment,
                         pid_t& child) const {
    if (arguments.empty()) {
        return EINVAL;
    }
    return ::posix_spawnp(&child, arguments.front().c_str(), &actions_, &attributes_,
                          pointersTo(arguments).data(), environment);
}

/// Waits for the end of the child, which keeps its number.
void waitForEnd(pid_t child) {
    siginfo_t info{};
    while (::waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT) != 0 &&
           errno == EINTR) {}
}

double secondsOf(const timeval& time) noexcept {
    constexpr double kMicroseconds = 1e-6;
    return static_cast<double>(time.tv_sec) + (static_cast<double>(time.tv_usec) * kMicroseconds);
}

ProcessUsage usageFrom(const rusage& used) noexcept {
    constexpr std::uint64_t kKibibyte = 1024;  // the unit of ru_maxrss on Linux
    return {secondsOf(used.ru_utime) + secondsOf(used.ru_stime),
            static_cast<std::uint64_t>(used.ru_maxrss) * kKibibyte};
}

/// Waits for the end of the child and reaps it. The alarm, if there is one, is called off while
/// the number still belongs to the child. Then it has a group of its own, and after an interruption
/// nothing of it is left: what a shell started in the background does not hear a Ctrl-C.
int waitFor(pid_t child, RunningChild& running, Alarm* alarm = nullptr,
            ProcessUsage* usage = nullptr) {
    waitForEnd(child);
    running.forget();
    if (alarm != nullptr) {
        alarm->stop();
        if (interruptSignal() != 0) {
            ::kill(-child, SIGKILL);
        }
    }
    int status = 0;
    rusage used{};
    while (::wait4(child, &status, 0, &used) < 0) {
        if (errno != EINTR) {
            return errno;
        }
    }
    if (usage != nullptr) {
        *usage = usageFrom(used);
    }
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

/// 0 and `child`, or the system's error code.
int start(const ProcessRequest& request, const SpawnSettings& settings,
          const ChildEnvironment& environment, pid_t& child) {
    if (!request.directArguments.empty()) {
        const std::string file = programFile(request, environment);
        if (!file.empty() && settings.spawnFile(file, request.directArguments,
                                                environment.forProgram(), child) == 0) {
            return 0;
        }
    }
    return settings.spawn(request.arguments, environment.forShell(), child);
}

/// Kills the child's process group when its time is over.
void setAlarm(std::optional<Alarm>& alarm, std::chrono::steady_clock::time_point when,
              pid_t child) {
    const auto kill = [child] { ::kill(-child, SIGKILL); };
    try {
        alarm.emplace(when, kill);
    } catch (const std::system_error&) {
        kill();  // without a thread that watches over it, it might run forever
    }
}

std::string readAll(int descriptor) {
    std::string content;
    std::array<char, 16384> buffer;
    for (;;) {
        const ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
        if (count > 0) {
            content.append(buffer.data(), static_cast<std::size_t>(count));
        } else if (count == 0 || errno != EINTR) {
            return content;
        }
    }
}

}  // namespace

ProcessResult runProcess(const ProcessRequest& request) {
    recordSideEffect();
    const bool ownGroup = childrenHaveOwnGroups() || request.deadline;
    SpawnSettings settings(ownGroup);
    if (const int error = settings.setWorkingDirectory(request.workingDirectory); error != 0) {
        return {false, error};
    }
    if (const int error = request.deadline ? settings.setNoInput() : 0; error != 0) {
        return {false, error};
    }
    ChildOutput output;
    const bool reads = request.output && output.open();
    if (reads) {
        if (const int error = settings.setStreams(output); error != 0) {
            return {false, error};
        }
    }
    const ChildEnvironment environment(request);
    RunningChild running;
    if (interruptSignal() != 0) {
        return {false, ECANCELED};
    }
    pid_t child = 0;
    if (const int error = start(request, settings, environment, child); error != 0) {
        return {false, error};
    }
    running.started(child, ownGroup);
    std::optional<Alarm> alarm;
    if (request.deadline) {
        setAlarm(alarm, *request.deadline, child);
    }
    if (reads) {
        output.read(child, request.output);
    }
    ProcessResult result;
    result.started = true;
    result.status = waitFor(child, running, alarm ? &*alarm : nullptr, &result.usage);
    result.timedOut = alarm && alarm->stop();
    return result;
}

std::optional<std::string> captureShellOutput(const std::string& command, int* status,
                                              Dependence dependence) {
    if (dependence == Dependence::Unknown) {
        recordSideEffect();
    }
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        return std::nullopt;
    }
    const Descriptor readEnd(ends[0]);
    Descriptor writeEnd(ends[1]);
    SpawnSettings settings;
    RunningChild running;
    pid_t child = 0;
    if (settings.setStandardOutput(writeEnd.get()) != 0 || interruptSignal() != 0 ||
        settings.spawn({"/bin/sh", "-c", command}, environ, child) != 0) {
        return std::nullopt;
    }
    running.started(child, childrenHaveOwnGroups());
    writeEnd.close();
    std::string output = readAll(readEnd.get());
    const int code = waitFor(child, running);
    if (status != nullptr) {
        *status = code;
    }
    return output;
}

std::string systemErrorText(int code) {
    return std::generic_category().message(code);
}

}  // namespace Vesk::platform
