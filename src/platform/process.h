// Child processes: start one and wait for it. Which command runs, and how a failure is worded, is
// decided above.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/console.h"

namespace Vesk::platform {

/// Takes what a child writes, piece by piece.
using OutputSink = std::function<void(Stream stream, std::string_view bytes)>;

/// What to start. Windows reads `commandLine`, POSIX reads `arguments`; the other one is ignored.
struct ProcessRequest {
    std::string commandLine;             ///< the whole command line, already quoted (Windows)
    std::vector<std::string> arguments;  ///< the program and its arguments (POSIX); the program is
                                         ///< searched in our PATH when it holds no slash

    /// POSIX: a program and its arguments to start instead, if that can be done; `arguments` is
    /// what is started when it cannot, and then says why.
    std::vector<std::string> directArguments;

    std::filesystem::path workingDirectory;               ///< empty: inherit ours
    std::optional<std::vector<std::string>> environment;  ///< "NAME=value" entries; unset: inherit

    /// Gets what the child writes, on the calling thread; empty: the child writes to our streams.
    /// Where ours are a terminal, the child of a POSIX system sees one too. What processes that
    /// outlive the child write is not waited for.
    OutputSink output;

    /// Whether a child whose output is taken reads our standard input. On POSIX every child does.
    bool readsInput = false;

    /// When the child is killed with all that it has started, unless it has ended. On POSIX what
    /// has left its process group stays. Such a child reads nothing from our standard input.
    std::optional<std::chrono::steady_clock::time_point> deadline;

    /// Whether the result is to say what the child used. On Windows that needs a job of its own for
    /// the child; on POSIX it is always known.
    bool measures = false;
};

/// What a child and the processes that it has waited for used; on Windows, all that it has started.
struct ProcessUsage {
    double processorSeconds = 0;
    std::uint64_t peakMemory = 0;  ///< bytes, of the largest of them; on Windows of all; 0: unknown
};

struct ProcessResult {
    bool started = false;     ///< false: `status` is the system's error code for the failed start
    int status = 0;           ///< exit code; on POSIX 128+N for a child that signal N killed
    bool timedOut = false;    ///< it was killed at its deadline
    ProcessUsage usage = {};  ///< if it was started
};

/// Starts the process and waits for it without a limit. Thread-safe.
///
/// A running child takes part in interruption (see interrupt.h); after an interruption nothing is
/// started and the status is the system's code for a cancelled operation. On Windows children do
/// not outlive a vesk that is killed; what they leave running on purpose outlives one that ends
/// itself.
ProcessResult runProcess(const ProcessRequest& request);

/// Whether a run in which a child answered can be repeated without it.
enum class Dependence {
    Unknown,   ///< on anything: no
    Recorded,  ///< on what the caller has looked at through this floor, and on nothing else: yes
};

/// Runs a command text through the system's shell and returns all that it wrote to standard
/// output; nothing when it could not be started. `status`, when given, gets the exit code.
std::optional<std::string> captureShellOutput(const std::string& command, int* status = nullptr,
                                              Dependence dependence = Dependence::Unknown);

/// The system's text for an error code as `ProcessResult::status` holds it, without a full stop at
/// its end.
std::string systemErrorText(int code);

}  // namespace Vesk::platform
