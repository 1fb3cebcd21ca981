// What the command line asks for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "app/doubts.h"
#include "base/console.h"
#include "project/project.h"

namespace Vesk {

/// Where the unit file's path comes from.
enum class UnitFileSource : std::uint8_t {
    Default = 0,
    Given = 1,        ///< -f
    CommandLine = 2,  ///< -c: there is no unit file
};

/// What a run does. Of several modes that are asked for the one with the highest number is run.
enum class RunMode : std::int32_t {
    Build = 0,
    ListProfiles = 1,
    ListUnits = 2,
    ListTargets = 3,
    Register = 4,
    FindCompilers = 5,
    CreateProject = 6,
    Version = 7,
    Help = 8,
    Options = 9,
    Explain = 10,
    VariableTables = 11,
    Init = 12,
    Complete = 13,
    Format = 14,
    Lint = 15,
    LanguageServer = 16,
};

/// How a build shows how far it is.
enum class ProgressStyle : std::uint8_t { Auto, Line, Plain, None };

/// A variable that the command line gives a plain text.
struct Definition {
    std::string name;
    std::string text;

    friend bool operator==(const Definition&, const Definition&) = default;
};

/// What a run in the mode Build does with targets. Of several that are asked for the last one is
/// done.
enum class Work : std::uint8_t { Build, Test, ListTests, Clean };

/// How tests are chosen and run.
struct TestSettings {
    std::string pattern;  ///< empty: all
    std::uint32_t repeat = 1;
    bool onlyChanged = false;
    std::string junit;  ///< the report to write, as given; empty: none

    friend bool operator==(const TestSettings&, const TestSettings&) = default;
};

struct CleanSettings {
    bool onlyStale = false;  ///< only what no target makes any more
    bool force = false;      ///< also what was changed since vesk made it

    friend bool operator==(const CleanSettings&, const CleanSettings&) = default;
};

enum class StatsForm : std::uint8_t { None, Text, Json };

/// What is written about the run itself: files, as given; empty: none. "-" is standard output.
struct SeeSettings {
    std::string trace;
    std::string events;
    std::string graph;
    std::string report;
    StatsForm stats = StatsForm::None;

    /// Whether it is about targets: a run that only repeats another would have nothing to show.
    bool aboutTargets() const noexcept { return !graph.empty() || compares(); }

    /// Whether earlier runs are compared with, and this one is kept for those to come.
    bool compares() const noexcept { return !report.empty() || stats != StatsForm::None; }

    bool any() const noexcept { return !trace.empty() || !events.empty() || aboutTargets(); }

    friend bool operator==(const SeeSettings&, const SeeSettings&) = default;
};

struct Settings {
    std::vector<std::string> arguments;  ///< what the settings were read from, in any form
    std::filesystem::path unitFile = kUnitFileName;
    UnitFileSource unitFileSource = UnitFileSource::Default;
    RunMode runMode = RunMode::Build;
    Work work = Work::Build;
    TestSettings tests;
    SeeSettings see;
    CleanSettings clean;
    std::int32_t verbosity = console::kDefaultThreshold;
    std::uint32_t jobCount = 1;
    bool commandLineMode = false;  ///< the command line itself describes what to build
    bool dump = false;             ///< show each project's implicit context
    bool rebuild = false;
    bool dryRun = false;
    bool keepGoing = false;
    ProgressStyle progress = ProgressStyle::Auto;
    bool why = false;      ///< show the reasons for which targets are built
    bool summary = false;  ///< say in the end what became of the targets, also after a success
    Doubts doubts = Doubts::Warn;
    std::uint32_t maxCommands = 0;  ///< 0: no limit
    std::string unitToList;
    bool onlyCheckFormat = false;
    std::string sarif;        ///< the report of --lint to write, as given
    std::string initKind;     ///< what --init is to write, as given
    bool removeGone = false;  ///< from the registry: toolchains that are gone
    bool fullVersion = false;
    std::string variable;                      ///< to explain; empty: all of them
    std::vector<std::string> wordsToComplete;  ///< the last is the one at the cursor
    std::string mainOutput;                    ///< the file that -o names, as given
    std::string compileCommands;               ///< the compilation database to write, as given
    std::vector<std::string> positionals;      ///< every argument that is not an option, in order
    std::vector<Definition> definitions;
    std::vector<std::string> unknownOptions;  ///< as they were given
    std::vector<std::string_view> given;      ///< long forms of the options that were given
    std::size_t givenForAll = 0;              ///< so many of them, the first, for every run

    friend bool operator==(const Settings&, const Settings&) = default;
};

}  // namespace Vesk
