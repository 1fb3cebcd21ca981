#include "app/command_line.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>

#include "base/console.h"
#include "base/text.h"
#include "platform/files.h"

namespace Vesk {
namespace {

using Arguments = std::vector<std::string>;

/// Leaves the console's threshold as it was.
class CommandLine : public testing::Test {
  protected:
    ~CommandLine() override { console::setThreshold(console::kDefaultThreshold); }

    static Settings parsed(const Arguments& arguments) {
        Settings settings;
        parseCommandLine(arguments, settings);
        return settings;
    }
};

struct Case {
    Arguments arguments;
    std::function<void(Settings&)> change;  ///< makes the initial settings those that are expected
};

std::filesystem::path absolutePath(const char* path) {
    return std::filesystem::absolute(platform::pathFromUtf8(path));
}

std::uint32_t hardwareThreads() {
    return std::max(1U, std::thread::hardware_concurrency());
}

std::function<void(Settings&)> nothing() {
    return [](Settings&) {};
}

std::function<void(Settings&)> mode(RunMode runMode) {
    return [runMode](Settings& settings) { settings.runMode = runMode; };
}

std::function<void(Settings&)> verbosity(int level) {
    return [level](Settings& settings) { settings.verbosity = level; };
}

std::function<void(Settings&)> jobs(std::uint32_t count) {
    return [count](Settings& settings) { settings.jobCount = count; };
}

std::function<void(Settings&)> words(Arguments positionals) {
    return [positionals](Settings& settings) { settings.positionals = positionals; };
}

template <bool Settings::*flag>
void set(Settings& settings) {
    settings.*flag = true;
}

void expectAll(const std::vector<Case>& cases) {
    for (const Case& expected : cases) {
        SCOPED_TRACE(joined(expected.arguments, " "));
        console::setThreshold(console::kDefaultThreshold);
        Settings settings;
        expected.change(settings);
        Settings got;
        parseCommandLine(expected.arguments, got);
        EXPECT_EQ(got.unitFile, settings.unitFile);
        EXPECT_EQ(got.unitFileSource, settings.unitFileSource);
        EXPECT_EQ(got.runMode, settings.runMode);
        EXPECT_EQ(got.verbosity, settings.verbosity);
        EXPECT_EQ(got.jobCount, settings.jobCount);
        EXPECT_EQ(got.unitToList, settings.unitToList);
        EXPECT_EQ(got.mainOutput, settings.mainOutput);
        EXPECT_EQ(got.positionals, settings.positionals);
        EXPECT_TRUE(got == settings) << "one of the flags";
        EXPECT_EQ(console::threshold(), settings.verbosity);
    }
}

TEST_F(CommandLine, StartsWithTheDefaults) {
    const Settings settings = parsed({});
    EXPECT_EQ(settings.unitFile, "vesk.txt");
    EXPECT_EQ(settings.unitFileSource, UnitFileSource::Default);
    EXPECT_EQ(settings.runMode, RunMode::Build);
    EXPECT_EQ(settings.verbosity, 5);
    EXPECT_EQ(settings.jobCount, 1U);
}

TEST_F(CommandLine, TakesTheModeWithTheHighestNumber) {
    expectAll({
        {{"-p"}, mode(RunMode::ListProfiles)},
        {{"--list-profiles"}, mode(RunMode::ListProfiles)},
        {{"-u"}, mode(RunMode::ListUnits)},
        {{"--LIST-UNITS"}, mode(RunMode::ListUnits)},
        {{"-U", "-p"}, mode(RunMode::ListUnits)},
        {{"-r"}, mode(RunMode::Register)},
        {{"--register", "-u", "-p"}, mode(RunMode::Register)},
        {{"--find-compilers"}, mode(RunMode::FindCompilers)},
        {{"--create-project", "--find-compilers"}, mode(RunMode::CreateProject)},
        {{"--version", "-u"}, mode(RunMode::Version)},
        {{"-r", "-h"}, mode(RunMode::Help)},
        {{"--help"}, mode(RunMode::Help)},
    });
}

TEST_F(CommandLine, LooksAtNothingAfterHelp) {
    expectAll({
        {{"-h", "--version", "word", "-l"}, mode(RunMode::Help)},
        {{"-h", "-v", "1", "-f"}, mode(RunMode::Help)},
    });
}

TEST_F(CommandLine, IgnoresUnknownSwitches) {
    expectAll({
        {{"--frobnicate", "-x", "-", "--", "-file2", "-vv", "--dryrun"}, nothing()},
        {{"---v", "-uu", "-1", "--jobs=", "-jx", "--jobs=x", "-c1"}, nothing()},
        {{"--find-compiler", "--versions", "-lib"}, nothing()},
    });
}

TEST_F(CommandLine, ReadsNumbersThatMayFollow) {
    expectAll({
        {{"-v"}, verbosity(3)},
        {{"--v"}, verbosity(3)},
        {{"-V"}, verbosity(3)},
        {{"-verbose"}, verbosity(3)},
        {{"--VERBOSE"}, verbosity(3)},
        {{"-v", "1"}, verbosity(1)},
        {{"-v", "8"}, verbosity(8)},
        {{"-v", "9x"}, verbosity(9)},
        {{"-v", "-1"}, verbosity(3)},
        {{"-v", "2147483647"}, verbosity(2147483647)},
        {{"-v", "0", "-v"}, verbosity(3)},
        {{"-j"}, jobs(hardwareThreads())},
        {{"-j", "-d", "-j", "0"},
         [](Settings& settings) { settings.jobCount = 0, settings.dump = true; }},
        {{"--jobs", "4"}, jobs(4)},
        {{"-j8"}, jobs(8)},
        {{"--jobs=16"}, jobs(16)},
        {{"--JOBS=2"}, jobs(2)},
    });
}

TEST_F(CommandLine, ReadsPathsAndUnits) {
    const auto given = [](const char* path) {
        return [path](Settings& settings) {
            settings.unitFile = absolutePath(path);
            settings.unitFileSource = UnitFileSource::Given;
        };
    };
    const auto list = [](const char* unit) {
        return [unit](Settings& settings) {
            settings.unitToList = unit;
            settings.runMode = RunMode::ListTargets;
        };
    };
    expectAll({
        {{"-f", "b.txt"}, given("b.txt")},
        {{"--file", "a/./../b \xC3\xA4.txt"}, given("b \xC3\xA4.txt")},
        {{"-f", "-v"}, given("-v")},
        {{"-o", "out/list"}, [](Settings& settings) { settings.mainOutput = "out/list"; }},
        {{"--out", "-d"}, [](Settings& settings) { settings.mainOutput = "-d"; }},
        {{"-l", "1"}, list("1")},
        {{"--list-targets", "core", "-u"}, list("core")},
        {{"-l", "core", "-l", ""}, list("")},
    });
}

TEST_F(CommandLine, SwitchesToCommandLineMode) {
    const auto commandLine = [](Settings& settings) {
        settings.unitFile.clear();
        settings.unitFileSource = UnitFileSource::CommandLine;
        settings.commandLineMode = true;
    };
    expectAll({
        {{"-c"}, commandLine},
        {{"--cmdmode"}, commandLine},
        {{"-f", "b.txt", "-c"}, commandLine},
        {{"-c", "-f", "b.txt"},
         [](Settings& settings) {
             settings.unitFile = absolutePath("b.txt");
             settings.unitFileSource = UnitFileSource::Given;
             settings.commandLineMode = true;
         }},
    });
}

TEST_F(CommandLine, SetsFlags) {
    expectAll({
        {{"-d"}, set<&Settings::dump>},
        {{"--dump"}, set<&Settings::dump>},
        {{"-n"}, set<&Settings::dryRun>},
        {{"--dry-run"}, set<&Settings::dryRun>},
        {{"-k"}, set<&Settings::keepGoing>},
        {{"--keep-going"}, set<&Settings::keepGoing>},
    });
}

TEST_F(CommandLine, KeepsEveryOtherArgumentInOrder) {
    expectAll({
        {{"app", "x=1", "", "a::b"}, words({"app", "x=1", "", "a::b"})},
        {{"app", "--frobnicate", "debug", "-", "x=-1"}, words({"app", "debug", "x=-1"})},
        {{"-v", "target"},
         [](Settings& settings) {
             settings.verbosity = 3;
             settings.positionals = {"target"};
         }},
        {{"app", "-j", "2", "x=1", "-v", "1", "y"},
         [](Settings& settings) {
             settings.jobCount = 2;
             settings.verbosity = 1;
             settings.positionals = {"app", "x=1", "y"};
         }},
    });
}

TEST_F(CommandLine, RefusesWhatItCannotRead) {
    const auto errorOf = [](const Arguments& arguments) -> std::string {
        try {
            parsed(arguments);
            return "no error";
        } catch (const std::out_of_range& error) {
            return std::string("out_of_range ") + error.what();
        } catch (const std::invalid_argument& error) {
            return std::string("invalid_argument ") + error.what();
        } catch (const std::runtime_error& error) {
            return std::string("runtime_error ") + error.what();
        }
    };
    const std::string noUnit = "invalid_argument Option '-l' requires a unit.";
    const std::string tooLarge = "out_of_range stoi argument out of range";
    const std::vector<std::pair<Arguments, std::string>> cases = {
        {{"-f"}, "runtime_error unknown switch"},
        {{"app", "--out"}, "runtime_error unknown switch"},
        {{"-l"}, noUnit},
        {{"-l", "-u"}, noUnit},
        {{"-v", "2147483648"}, tooLarge},
        {{"-j", "99999999999999999999"}, tooLarge},
        {{"-j2147483648"}, tooLarge},
    };
    for (const auto& [arguments, error] : cases) {
        EXPECT_EQ(errorOf(arguments), error) << joined(arguments, " ");
    }
}

}  // namespace
}  // namespace Vesk
