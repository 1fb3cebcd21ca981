// What happens in a run, piece by piece.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>

#include "platform/process.h"

namespace Vesk::events {

/// Tells visits, commands and activities of a run apart. 0: none, or nobody listens.
using Id = std::uint64_t;

/// Since the run began.
using Time = std::chrono::microseconds;

/// The visit that something belongs to.
struct Subject {
    Id visit = 0;
    std::string target;  ///< as messages have it: "main::app"
};

struct RunStarted {
    std::string version;    ///< of vesk
    std::string directory;  ///< of the project
    unsigned jobs = 1;
    bool dryRun = false;
};

/// What the driver's thread does besides visits; such activities are properly nested.
enum class Activity : std::uint8_t {
    Read,   ///< files of the project, the registry, toolchains
    Cache,  ///< looks up, compares, records, saves
};

struct ActivityStarted {
    Id id = 0;
    Activity activity = Activity::Read;
    std::string name;
};

struct ActivityFinished {
    Id id = 0;
};

/// On the driver's thread, nested: a dependency is visited within its dependant.
struct VisitStarted {
    Subject subject;
    std::string project;
    std::string unit;
    std::string profile;    ///< empty: none is selected
    std::string arguments;  ///< for its parameters: `("x", 3)`; empty without any
    std::string place;      ///< of the target's text
};

struct VisitFinished {
    Id visit = 0;
    std::string tool;   ///< that was chosen; empty: none was
    bool kept = false;  ///< it went as an earlier one, and was not made
};

/// One visit needs the outputs of another.
struct Needed {
    Id by = 0;
    Id visit = 0;
};

/// Why a target is built.
struct ReasonFound {
    Subject subject;
    std::string text;    ///< a sentence: `C_FLAGS: "-O0" is now "-O2"`
    std::string file;    ///< the file that is to blame, absolute; empty: none
    std::string name;    ///< what has another value; empty: nothing
    std::string before;  ///< its values; a value that must not be shown is empty
    std::string now;
};

struct CommandStarted {
    Id id = 0;
    Subject subject;
    Id step = 0;         ///< the recipe that it belongs to; its commands run one after another
    unsigned stage = 0;  ///< of the target: those of one wait for those of the lower ones
    unsigned lane = 0;   ///< as low as possible: no two that run at once have the same
    std::string command;
    std::string makes;  ///< its first output, or else what it reads first; may be empty
};

/// Whole lines that a command has written, as far as vesk sees them.
struct Output {
    Id command = 0;
    platform::Stream stream = platform::Stream::Output;
    std::string text;
};

struct CommandFinished {
    Id id = 0;
    std::int32_t status = 0;  ///< 0: it has succeeded
    platform::ProcessUsage usage;
};

enum class Outcome : std::uint8_t {
    Built,     ///< some of its commands have run; in a dry run: would
    Fresh,     ///< none had to
    Group,     ///< it has no commands
    Failed,    ///< may come after another outcome, and holds
    Skipped,   ///< what it needs is not there
    NotBegun,  ///< the build stopped before
};

struct TargetFinished {
    Subject subject;
    Outcome outcome = Outcome::NotBegun;
    std::string said;           ///< why it failed, with what the command wrote; what it lacks
    std::size_t keptSteps = 0;  ///< commands that did not have to run
    double keptSeconds = 0;     ///< how long those took when they last ran, as far as known
};

/// Nothing has changed since an earlier run, which is repeated: no target is visited.
struct RunRepeated {};

enum class RunOutcome : std::uint8_t { Done, Failed, Interrupted };

struct RunFinished {
    RunOutcome outcome = RunOutcome::Done;
};

using Event = std::variant<RunStarted, ActivityStarted, ActivityFinished, VisitStarted,
                           VisitFinished, Needed, ReasonFound, CommandStarted, Output,
                           CommandFinished, TargetFinished, RunRepeated, RunFinished>;

}  // namespace Vesk::events
