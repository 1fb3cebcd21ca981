// Signals: what a child dies of, and what an interruption does to children.
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "platform/console.h"
#include "platform/files.h"
#include "platform/process.h"
#include "platform/support.h"

namespace Vesk::platform {
namespace {

using test::contentOf;
using test::TempDir;

/// A vesk of sorts: the test child, supervising a child of its own.
class Supervisor {
  public:
    enum class Input { null, terminal };

    Supervisor(const TempDir& dir, Input input, const std::vector<std::string>& command)
        : dir_(dir) {
        std::vector<std::string> arguments{VESK_TEST_CHILD, "supervise", dir.text("report")};
        arguments.insert(arguments.end(), command.begin(), command.end());
        std::vector<char*> pointers;
        for (std::string& argument : arguments) {
            pointers.push_back(argument.data());
        }
        pointers.push_back(nullptr);
        pid_ =
            input == Input::terminal ? ::forkpty(&terminal_, nullptr, nullptr, nullptr) : ::fork();
        if (pid_ == 0) {
            if (input == Input::null) {
                ::dup2(::open("/dev/null", O_RDONLY), STDIN_FILENO);
            }
            ::execv(pointers[0], pointers.data());
            ::_exit(127);
        }
    }
    ~Supervisor() {
        if (terminal_ >= 0) {
            ::close(terminal_);
        }
    }

    void signal(int number) const { ::kill(pid_, number); }
    void typeControlC() const { EXPECT_EQ(::write(terminal_, "\x03", 1), 1); }

    /// Exit code, or 128+N.
    int join() const {
        int status = 0;
        ::waitpid(pid_, &status, 0);
        return codeOf(status);
    }

    /// Signals again and again until it ends: requests that come too quickly count as one.
    int signalUntilEnd(int number) const {
        int status = 0;
        while (::waitpid(pid_, &status, WNOHANG) == 0) {
            signal(number);
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return codeOf(status);
    }

    std::string report() const { return contentOf(dir_ / "report"); }

  private:
    static int codeOf(int status) {
        return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    }

    const TempDir& dir_;
    pid_t pid_ = -1;
    int terminal_ = -1;
};

/// Returns when nobody lives that holds the lock.
void expectHolderGone(const TempDir& dir) {
    const FileLock lock(dir / "lock");
}

TEST(Signals, AKilledChildGives128AndTheSignal) {
    for (const int signal : {SIGTERM, SIGKILL, SIGPIPE}) {
        const ProcessResult result =
            runProcess(test::childRequest({"raise", std::to_string(signal)}));
        EXPECT_TRUE(result.started);
        EXPECT_EQ(result.status, 128 + signal);
    }
}

TEST(Signals, AnIgnoredBrokenPipeIsNotInherited) {
    prepareConsole();
    EXPECT_EQ(runProcess(test::childRequest({"raise", std::to_string(SIGPIPE)})).status,
              128 + SIGPIPE);
    std::signal(SIGPIPE, SIG_DFL);
}

TEST(Interruption, IsHandedToTheChild) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const TempDir dir;
        const Supervisor vesk(dir, Supervisor::Input::null,
                              {VESK_TEST_CHILD, "linger", dir.text("lock"), dir.text("started")});
        test::waitForFile(dir / "started");
        vesk.signal(signal);
        EXPECT_EQ(vesk.join(), 0);
        const std::string number = std::to_string(signal);
        EXPECT_EQ(vesk.report(), "status " + std::to_string(128 + signal) + ", signal " + number +
                                     ", second refused");
        expectHolderGone(dir);
    }
}

TEST(Interruption, ReachesWhatTheChildStarted) {
    const TempDir dir;
    const std::string command =
        test::childCommand({"linger", dir.text("lock"), dir.text("started")});
    const Supervisor vesk(dir, Supervisor::Input::null, {"/bin/sh", "-c", command + "; exit 1"});
    test::waitForFile(dir / "started");
    vesk.signal(SIGTERM);
    EXPECT_EQ(vesk.join(), 0);
    expectHolderGone(dir);
}

TEST(Interruption, ASecondRequestKills) {
    const TempDir dir;
    // Neither the shell nor what it started cares about the first request.
    const std::string command =
        "trap '' TERM; " + test::childCommand({"linger", dir.text("lock"), dir.text("started")});
    const Supervisor vesk(dir, Supervisor::Input::null, {"/bin/sh", "-c", command + "; exit 1"});
    test::waitForFile(dir / "started");
    EXPECT_EQ(vesk.signalUntilEnd(SIGTERM), 128 + SIGTERM);
    expectHolderGone(dir);
}

TEST(Interruption, OnATerminalControlCEndsBoth) {
    const TempDir dir;
    const Supervisor vesk(dir, Supervisor::Input::terminal,
                          {VESK_TEST_CHILD, "linger", dir.text("lock"), dir.text("started")});
    test::waitForFile(dir / "started");
    vesk.typeControlC();
    EXPECT_EQ(vesk.join(), 0);
    EXPECT_EQ(vesk.report(), "status 130, signal 2, second refused");
    expectHolderGone(dir);
}

TEST(WholeFile, NoticesAFullDisk) {
    std::error_code error;
    EXPECT_FALSE(writeWholeFile("/dev/full", "x", Append::no, error));
    EXPECT_EQ(error, std::errc::no_space_on_device);
}

}  // namespace
}  // namespace Vesk::platform
