// What a run's record says about where its time went.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "report/run_record.h"

namespace Vesk::report {

/// Times are seconds.
struct Totals {
    std::size_t built = 0;  ///< targets; in a dry run: to be built
    std::size_t fresh = 0;
    std::size_t groups = 0;
    std::size_t failed = 0;
    std::size_t skipped = 0;
    std::size_t notBegun = 0;
    std::size_t keptVisits = 0;

    std::size_t keptSteps = 0;  ///< commands that did not have to run
    double keptTime = 0;        ///< that they took when they last ran, as far as known

    std::size_t failedCommands = 0;
    double commandTime = 0;    ///< of all commands, added up
    double processorTime = 0;  ///< likewise
    double running = 0;        ///< while at least one command ran
    unsigned mostAtOnce = 0;

    double reading = 0;  ///< on the driver's thread
    double cache = 0;
};

Totals totalsOf(const RunRecord& run);

/// The longest chain of commands that needed one another, first to last: no number of workers makes
/// the build shorter than that. Empty without commands.
std::vector<std::size_t> criticalPath(const RunRecord& run);

/// The commands that took longest, the longest first.
std::vector<std::size_t> slowest(const RunRecord& run, std::size_t most);

/// The one that used most memory; nothing, as the number of commands, where that is not known.
std::size_t largest(const RunRecord& run);

/// Lines of commands that succeeded, in which there is a warning.
struct Warning {
    std::size_t command;
    std::string text;
};

/// At most so many; the same line of one target once.
std::vector<Warning> warningsOf(const RunRecord& run, std::size_t most);

}  // namespace Vesk::report
