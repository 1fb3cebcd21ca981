#include "app/options.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <thread>

#include "base/ci_string.h"
#include "base/console.h"
#include "base/exception.h"
#include "base/text.h"
#include "grammar/identifier.h"
#include "platform/files.h"

namespace Vesk {
namespace {

constexpr std::string_view kWhatIsBuilt = "What is built";
constexpr std::string_view kHow = "How it is built";
constexpr std::string_view kWhatIsShown = "What is shown and written";
constexpr std::string_view kSeeing = "To see the build";
constexpr std::string_view kTests = "Tests";
constexpr std::string_view kCleaning = "Removing what was built";
constexpr std::string_view kFiles = "Files of vesk's language";
constexpr std::string_view kInstead = "Instead of a build";
constexpr std::string_view kHidden;  // asked for by scripts, not by people

std::uint32_t count(const std::string& digits) {
    return static_cast<std::uint32_t>(leadingInteger(digits));
}

void setCommandLineMode(Settings& settings, const std::string& /*value*/) {
    settings.commandLineMode = true;
    settings.unitFile.clear();
    settings.unitFileSource = UnitFileSource::CommandLine;
}

void setUnitFile(Settings& settings, const std::string& value) {
    const std::filesystem::path path = platform::pathFromUtf8(value);
    // An empty path has no absolute form; the code that opens the file reports it.
    settings.unitFile = path.empty() ? path : std::filesystem::absolute(path).lexically_normal();
    settings.unitFileSource = UnitFileSource::Given;
}

void setVerbosity(Settings& settings, const std::string& value) {
    settings.verbosity = value.empty() ? console::level::kDetail : leadingInteger(value);
    console::setThreshold(settings.verbosity);
}

void setProgress(Settings& settings, const std::string& value) {
    if (equalsIgnoringCase(value, "auto")) {
        settings.progress = ProgressStyle::Auto;
    } else if (equalsIgnoringCase(value, "line")) {
        settings.progress = ProgressStyle::Line;
    } else if (equalsIgnoringCase(value, "plain")) {
        settings.progress = ProgressStyle::Plain;
    } else if (equalsIgnoringCase(value, "none")) {
        settings.progress = ProgressStyle::None;
    } else {
        VeskException error("There is no progress '" + value + "'.");
        error.addNote("write --progress=auto, line, plain or none");
        throw error;
    }
}

void askWhy(Settings& settings, const std::string& /*value*/) {
    settings.why = true;
    setVerbosity(settings, std::to_string(console::level::kWarning));
}

void setJobCount(Settings& settings, const std::string& value) {
    settings.jobCount =
        value.empty() ? std::max(1U, std::thread::hardware_concurrency()) : count(value);
}

void setMaxCommands(Settings& settings, const std::string& value) {
    const bool isNumber = !value.empty() && value.front() >= '0' && value.front() <= '9';
    settings.maxCommands = isNumber ? count(value) : settings.maxCommands;
}

void addDefinition(Settings& settings, const std::string& value) {
    const std::size_t equals = value.find('=');
    std::string name = value.substr(0, equals);
    if (equals == std::string::npos || !isIdentifier(name)) {
        VeskException error("'--define=" + value + "' gives no variable a text.");
        error.addNote("write --define=NAME=text; a name has letters, digits, '_' and '-'");
        throw error;
    }
    settings.definitions.push_back({std::move(name), value.substr(equals + 1)});
}

void refuseDoubts(Settings& settings, const std::string& /*value*/) {
    settings.doubts = Doubts::Refuse;
}

void askFor(Settings& settings, RunMode mode) {
    settings.runMode = std::max(settings.runMode, mode);
}

void setUnitToList(Settings& settings, const std::string& value) {
    settings.unitToList = value;
    askFor(settings, RunMode::ListTargets);
}

void setVariable(Settings& settings, const std::string& value) {
    settings.variable = value;
    askFor(settings, RunMode::Explain);
}

void ask(Settings& settings, Work work) {
    settings.work = std::max(settings.work, work);
}

template <Work work>
void test(Settings& settings, const std::string& value) {
    settings.tests.pattern = value.empty() ? settings.tests.pattern : value;
    ask(settings, work);
}

void setRepeat(Settings& settings, const std::string& value) {
    const char* const end = value.data() + value.size();
    std::uint32_t count = 0;
    const auto [rest, error] = std::from_chars(value.data(), end, count);
    if (error != std::errc() || rest != end || count == 0) {
        throw VeskException("Option '--repeat' takes a number from 1: '--repeat=10'.");
    }
    settings.tests.repeat = count;
}

void setOnlyChanged(Settings& settings, const std::string& /*value*/) {
    settings.tests.onlyChanged = true;
}

void setJunit(Settings& settings, const std::string& value) {
    settings.tests.junit = value;
}

void setClean(Settings& settings, const std::string& value) {
    if (!value.empty() && !equalsIgnoringCase(value, "stale")) {
        throw VeskException("Option '--clean' takes nothing or 'stale': '--clean=stale'.");
    }
    settings.clean.onlyStale = settings.clean.onlyStale || !value.empty();
    settings.doubts = Doubts::Refuse;  // with a mistyped target's name everything would go
    ask(settings, Work::Clean);
}

void setForce(Settings& settings, const std::string& /*value*/) {
    settings.clean.force = true;
}

void setFormat(Settings& settings, const std::string& value) {
    if (!value.empty() && !equalsIgnoringCase(value, "check")) {
        throw VeskException("Option '--format' takes nothing or 'check': '--format=check'.");
    }
    settings.onlyCheckFormat = settings.onlyCheckFormat || !value.empty();
    askFor(settings, RunMode::Format);
}

void setInit(Settings& settings, const std::string& value) {
    settings.initKind = value;
    askFor(settings, RunMode::Init);
}

void setWordsToComplete(Settings& settings, const std::string& value) {
    console::setThreshold(console::level::kError + 1);
    for (std::size_t start = 0; start < value.size();) {
        const std::size_t end = value.find('\0', start);
        settings.wordsToComplete.push_back(value.substr(start, end - start));
        start = end + 1;
    }
    askFor(settings, RunMode::Complete);
}

void setVersion(Settings& settings, const std::string& value) {
    if (!value.empty() && !equalsIgnoringCase(value, "full")) {
        throw VeskException("Option '--version' takes nothing or 'full': '--version=full'.");
    }
    settings.fullVersion = !value.empty();
    askFor(settings, RunMode::Version);
}

void setRemoveGone(Settings& settings, const std::string& /*value*/) {
    settings.removeGone = true;
    askFor(settings, RunMode::FindCompilers);
}

template <RunMode mode>
void choose(Settings& settings, const std::string& /*value*/) {
    askFor(settings, mode);
}

template <bool Settings::*flag>
void set(Settings& settings, const std::string& /*value*/) {
    settings.*flag = true;
}

/// A file about the run itself.
template <std::string SeeSettings::*file>
void write(Settings& settings, const std::string& value) {
    settings.see.*file = value;
}

void setStats(Settings& settings, const std::string& value) {
    if (!value.empty() && !equalsIgnoringCase(value, "json")) {
        throw VeskException("Option '--stats' takes nothing or 'json': '--stats=json'.");
    }
    settings.see.stats = value.empty() ? StatsForm::Text : StatsForm::Json;
}

template <std::string Settings::*text>
void take(Settings& settings, const std::string& value) {
    settings.*text = value;
}

// clang-format off
constexpr std::array kOptions = {
    Option{kWhatIsBuilt, "f", "file", ArgumentForm::Path, "PATH",
           "reads this unit file, and no project", setUnitFile},
    Option{kWhatIsBuilt, "c", "cmdMode", ArgumentForm::None, "",
           "no file: the assignments on the command line are the target", setCommandLineMode},
    Option{kWhatIsBuilt, "", "define", ArgumentForm::Attached, "NAME=TEXT",
           "gives a variable this text, without quotes of the language", addDefinition},
    Option{kWhatIsBuilt, "", "strict", ArgumentForm::None, "",
           "makes probable mistakes errors instead of warnings", refuseDoubts,
           FromProject::yes},

    Option{kHow, "j", "jobs", ArgumentForm::AttachedNumber, "[N]",
           "how many commands run at once, over all targets", setJobCount,
           FromProject::yes},
    Option{kHow, "", "max-commands", ArgumentForm::Attached, "N",
           "at most N commands run at once, including those of a list", setMaxCommands,
           FromProject::yes},
    Option{kHow, "k", "keep-going", ArgumentForm::None, "",
           "after a failure continues with what does not need the failed target",
           set<&Settings::keepGoing>,
           FromProject::yes},
    Option{kHow, "", "rebuild", ArgumentForm::None, "",
           "builds the target and everything that it needs, even if it is up to date",
           set<&Settings::rebuild>},
    Option{kHow, "n", "dry-run", ArgumentForm::None, "",
           "shows the commands, runs and writes nothing", set<&Settings::dryRun>},

    Option{kWhatIsShown, "v", "verbose", ArgumentForm::Number, "[N]",
           "shows messages of level N and above", setVerbosity},
    Option{kWhatIsShown, "d", "dump", ArgumentForm::None, "",
           "shows what every target of each project sees first", set<&Settings::dump>},
    Option{kWhatIsShown, "o", "out", ArgumentForm::Path, "PATH",
           "writes the outputs of the requested target to a file", take<&Settings::mainOutput>},
    Option{kWhatIsShown, "", "compile-commands", ArgumentForm::Attached, "FILE",
           "writes the compilation database of the target and everything that it needs",
           take<&Settings::compileCommands>},
    Option{kWhatIsShown, "", "progress", ArgumentForm::Attached, "STYLE",
           "how progress is shown: auto, line, plain or none", setProgress,
           FromProject::yes},
    Option{kWhatIsShown, "", "why", ArgumentForm::None, "",
           "shows only why targets are built, or in a dry run would be", askWhy},
    Option{kWhatIsShown, "", "summary", ArgumentForm::None, "",
           "says at the end how many targets were built and which failed", set<&Settings::summary>,
           FromProject::yes},

    Option{kSeeing, "", "events", ArgumentForm::Attached, "FILE",
           "writes what happens while it happens, a line of JSON each",
           write<&SeeSettings::events>},
    Option{kSeeing, "", "trace", ArgumentForm::Attached, "FILE",
           "writes where the time went, for Perfetto and chrome://tracing",
           write<&SeeSettings::trace>},
    Option{kSeeing, "", "graph", ArgumentForm::Attached, "FILE",
           "writes the targets and what they need of one another: .dot, .svg, .json",
           write<&SeeSettings::graph>},
    Option{kSeeing, "", "report", ArgumentForm::Attached, "FILE",
           "writes a page for browsers: what was built, why, and where the time went",
           write<&SeeSettings::report>},
    Option{kSeeing, "", "stats", ArgumentForm::AttachedIfAny, "[=json]",
           "says in the end where the time went, in about twenty lines", setStats},

    Option{kTests, "", "test", ArgumentForm::AttachedIfAny, "[=PATTERN]",
           "builds and runs the tests, or those that match the pattern", test<Work::Test>},
    Option{kTests, "", "list-tests", ArgumentForm::AttachedIfAny, "[=PATTERN]",
           "lists the tests that --test would run", test<Work::ListTests>},
    Option{kTests, "", "changed", ArgumentForm::None, "",
           "skips tests for which nothing has changed since they passed", setOnlyChanged,
           FromProject::yes, "test"},
    Option{kTests, "", "repeat", ArgumentForm::Attached, "N",
           "runs each test N times, or until it fails", setRepeat,
           FromProject::yes, "test"},
    Option{kTests, "", "junit", ArgumentForm::Attached, "FILE",
           "with --test writes the results as JUnit XML", setJunit, FromProject::no, "test"},

    Option{kCleaning, "", "clean", ArgumentForm::AttachedIfAny, "[=stale]",
           "removes what vesk has made, or what no target makes any more", setClean},
    Option{kCleaning, "", "force", ArgumentForm::None, "",
           "with --clean also removes files that have changed since", setForce,
           FromProject::no, "clean"},

    Option{kFiles, "", "format", ArgumentForm::AttachedIfAny, "[=check]",
           "lays out the files that are named, or the project's; check: only lists them", setFormat},
    Option{kFiles, "", "lint", ArgumentForm::None, "",
           "says what is wrong with these files, and builds nothing", choose<RunMode::Lint>},
    Option{kFiles, "", "sarif", ArgumentForm::Attached, "FILE",
           "with --lint writes the findings as SARIF", take<&Settings::sarif>,
           FromProject::no, "lint"},
    Option{kFiles, "", "language-server", ArgumentForm::None, "",
           "serves an editor over standard input and output", choose<RunMode::LanguageServer>},

    Option{kInstead, "l", "list-targets", ArgumentForm::Unit, "UNIT",
           "lists a unit's targets", setUnitToList},
    Option{kInstead, "u", "list-units", ArgumentForm::None, "",
           "lists the project's units", choose<RunMode::ListUnits>},
    Option{kInstead, "p", "list-profiles", ArgumentForm::None, "",
           "lists the project's profiles", choose<RunMode::ListProfiles>},
    Option{kInstead, "r", "register", ArgumentForm::None, "",
           "adds the project to the registry under its name", choose<RunMode::Register>},
    Option{kInstead, "", "find-compilers", ArgumentForm::None, "",
           "registers the installed toolchains", choose<RunMode::FindCompilers>},
    Option{kInstead, "", "remove-gone", ArgumentForm::None, "",
           "the same, and removes toolchains that are gone from the registry", setRemoveGone},
    Option{kInstead, "", "init", ArgumentForm::AttachedIfAny, "[=KIND]",
           "writes a first unit file, and sources (c, c++, lib) if there are none", setInit},
    Option{kInstead, "", "create-project", ArgumentForm::None, "",
           "writes a project file from the unit files below", choose<RunMode::CreateProject>},
    Option{kInstead, "", "version", ArgumentForm::AttachedIfAny, "[=full]",
           "prints the version, or commit, compiler and libraries too", setVersion},
    Option{kInstead, "h", "help", ArgumentForm::Rest, "",
           "prints the usual options", choose<RunMode::Help>},
    Option{kInstead, "", "options", ArgumentForm::None, "",
           "prints this list", choose<RunMode::Options>},
    Option{kInstead, "", "explain", ArgumentForm::None, "",
           "lists the variables that tools know", choose<RunMode::Explain>},
    Option{kInstead, "", "explain", ArgumentForm::Attached, "VARIABLE",
           "shows what a variable means", setVariable},
    Option{kInstead, "", "variable-tables", ArgumentForm::None, "",
           "prints the variables as tables in Markdown", choose<RunMode::VariableTables>},

    Option{kHidden, "", "complete", ArgumentForm::Words, "WORDS",
           "what can stand in the place of the last word, for shells", setWordsToComplete},
};
// clang-format on

}  // namespace

std::span<const Option> options() noexcept {
    return kOptions;
}

std::string synopsis(const Option& option) {
    std::string text;
    if (!option.shortForm.empty()) {
        text.append("-").append(option.shortForm).append(", ");
    }
    text.append("--").append(option.longForm);
    if (option.form == ArgumentForm::AttachedIfAny) {
        text.append(option.argument);
    } else if (!option.argument.empty()) {
        text.append(option.form == ArgumentForm::Attached ? "=" : " ").append(option.argument);
    }
    return text;
}

}  // namespace Vesk
