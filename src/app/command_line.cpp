#include "app/command_line.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <initializer_list>
#include <stdexcept>
#include <string_view>
#include <thread>

#include "base/ci_string.h"
#include "base/console.h"
#include "base/text.h"
#include "platform/files.h"

namespace Vesk {
namespace {

bool isDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

bool beginsWithDigit(std::string_view text) noexcept {
    return !text.empty() && isDigit(text.front());
}

bool beginsWithDash(std::string_view text) noexcept {
    return !text.empty() && text.front() == '-';
}

/// The arguments that have not been looked at yet.
class ArgumentReader {
  public:
    explicit ArgumentReader(const std::vector<std::string>& arguments) : arguments_(arguments) {}

    bool atEnd() const noexcept { return next_ == arguments_.size(); }
    const std::string& peek() const { return arguments_[next_]; }
    const std::string& take() { return arguments_[next_++]; }
    void skipAll() noexcept { next_ = arguments_.size(); }

    /// The value of an option that cannot do without one.
    const std::string& takeRequired() {
        if (atEnd()) {
            throw std::runtime_error("unknown switch");
        }
        return take();
    }

    /// The number that may follow an option, else `otherwise()`.
    template <class Otherwise>
    int takeNumberOr(Otherwise otherwise) {
        return !atEnd() && beginsWithDigit(peek()) ? leadingInteger(take()) : otherwise();
    }

  private:
    const std::vector<std::string>& arguments_;
    std::size_t next_ = 0;
};

void atLeast(Settings& settings, RunMode mode) {
    settings.runMode = std::max(settings.runMode, mode);
}

void setCommandLineMode(Settings& settings, ArgumentReader& /*reader*/) {
    settings.commandLineMode = true;
    settings.unitFile.clear();
    settings.unitFileSource = UnitFileSource::CommandLine;
}

void setUnitFile(Settings& settings, ArgumentReader& reader) {
    const std::filesystem::path path = platform::pathFromUtf8(reader.takeRequired());
    // An empty path has no absolute form; whoever opens the file says what is wrong with it.
    settings.unitFile = path.empty() ? path : std::filesystem::absolute(path).lexically_normal();
    settings.unitFileSource = UnitFileSource::Given;
}

void setVerbosity(Settings& settings, ArgumentReader& reader) {
    settings.verbosity = reader.takeNumberOr([] { return console::level::kDetail; });
    console::setThreshold(settings.verbosity);
}

void setJobCount(Settings& settings, ArgumentReader& reader) {
    settings.jobCount = static_cast<std::uint32_t>(reader.takeNumberOr(
        [] { return static_cast<int>(std::max(1U, std::thread::hardware_concurrency())); }));
}

void setMainOutput(Settings& settings, ArgumentReader& reader) {
    settings.mainOutput = reader.takeRequired();
}

void setUnitToList(Settings& settings, ArgumentReader& reader) {
    if (reader.atEnd() || beginsWithDash(reader.peek())) {
        throw std::invalid_argument("Option '-l' requires a unit.");
    }
    settings.unitToList = reader.take();
    atLeast(settings, RunMode::ListTargets);
}

void askForHelp(Settings& settings, ArgumentReader& reader) {
    atLeast(settings, RunMode::Help);
    reader.skipAll();
}

template <RunMode mode>
void askFor(Settings& settings, ArgumentReader& /*reader*/) {
    atLeast(settings, mode);
}

template <bool Settings::*flag>
void set(Settings& settings, ArgumentReader& /*reader*/) {
    settings.*flag = true;
}

struct Option {
    std::string_view shortForm;  ///< one letter; empty when there is none
    std::string_view longForm;
    void (*apply)(Settings& settings, ArgumentReader& reader);
};

constexpr std::array kOptions = {
    Option{"c", "cmdMode", setCommandLineMode},
    Option{"f", "file", setUnitFile},
    Option{"", "version", askFor<RunMode::Version>},
    Option{"v", "verbose", setVerbosity},
    Option{"j", "jobs", setJobCount},
    Option{"o", "out", setMainOutput},
    Option{"d", "dump", set<&Settings::dump>},
    Option{"l", "list-targets", setUnitToList},
    Option{"u", "list-units", askFor<RunMode::ListUnits>},
    Option{"p", "list-profiles", askFor<RunMode::ListProfiles>},
    Option{"h", "help", askForHelp},
    Option{"", "create-project", askFor<RunMode::CreateProject>},
    Option{"r", "register", askFor<RunMode::Register>},
    Option{"", "find-compilers", askFor<RunMode::FindCompilers>},
    Option{"n", "dry-run", set<&Settings::dryRun>},
    Option{"", "rebuild", set<&Settings::rebuild>},
    Option{"k", "keep-going", set<&Settings::keepGoing>},
};

/// The job count written into the argument itself: "-j8", "--jobs=8".
void applyAttachedJobCount(std::string_view word, Settings& settings) {
    for (const std::string_view start : {"j", "jobs="}) {
        const std::string_view number = word.substr(std::min(start.size(), word.size()));
        if (equalsIgnoringCase(word.substr(0, start.size()), start) && beginsWithDigit(number)) {
            settings.jobCount = static_cast<std::uint32_t>(leadingInteger(std::string(number)));
            return;
        }
    }
}

/// "--max-commands=8".
void applyMaxCommands(std::string_view word, Settings& settings) {
    constexpr std::string_view kStart = "max-commands=";
    const std::string_view number = word.substr(std::min(kStart.size(), word.size()));
    if (equalsIgnoringCase(word.substr(0, kStart.size()), kStart) && beginsWithDigit(number)) {
        settings.maxCommands = static_cast<std::uint32_t>(leadingInteger(std::string(number)));
    }
}

/// "--compile-commands=FILE": an older vesk ignores it whole, file and all.
void applyCompileCommands(std::string_view word, Settings& settings) {
    constexpr std::string_view kStart = "compile-commands=";
    if (equalsIgnoringCase(word.substr(0, kStart.size()), kStart)) {
        settings.compileCommands = word.substr(kStart.size());
    }
}

void applySwitch(std::string_view word, Settings& settings, ArgumentReader& reader) {
    for (const Option& option : kOptions) {
        const bool isShort = !word.empty() && equalsIgnoringCase(word, option.shortForm);
        if (isShort || equalsIgnoringCase(word, option.longForm)) {
            option.apply(settings, reader);
            return;
        }
    }
    applyAttachedJobCount(word, settings);
    applyCompileCommands(word, settings);
    applyMaxCommands(word, settings);
}

std::string_view withoutDashes(std::string_view argument) noexcept {
    argument.remove_prefix(1);
    if (beginsWithDash(argument)) {
        argument.remove_prefix(1);
    }
    return argument;
}

}  // namespace

const char* const kHelpText =
    "vesk [options] target? [assignment]*\n"
    "Options: \n"
    "  -l <unit>  list targets from unit (1 = main unit)\n"
    "  -u         list units from project file\n"
    "  -p         list profiles from project file\n"
    "  -v <num>   verbosity level, default = 2\n"
    "  -j <num>   thread count\n"
    "  -f <file>  default vesk file override\n"
    "  -o <file>  main target outputs\n"
    "  -r         register current project\n"
    "  --find-compilers   detect and register default toolchains\n"
    "  --version\n"
    "  --create-project     initialise project file\n";

void parseCommandLine(const std::vector<std::string>& arguments, Settings& settings) {
    ArgumentReader reader(arguments);
    while (!reader.atEnd()) {
        const std::string& argument = reader.take();
        if (beginsWithDash(argument)) {
            applySwitch(withoutDashes(argument), settings, reader);
        } else {
            settings.positionals.push_back(argument);
        }
    }
}

}  // namespace Vesk
