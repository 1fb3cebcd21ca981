#include "app/command_line.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>

#include "base/console.h"
#include "base/text.h"
#include "platform/files.h"

namespace Vesk {
namespace {

using Arguments = std::vector<std::string>;

/// What differs from the defaults, in the order of the fields.
std::string described(const Settings& got) {
    const Settings initial;
    std::string text;
    const auto add = [&text](bool differs, const std::string& what) {
        text += differs ? (text.empty() ? "" : " ") + what : "";
    };
    add(got.runMode != initial.runMode, fmt::format("mode={}", static_cast<int>(got.runMode)));
    add(got.unitFile != initial.unitFile,
        "file=" +
            platform::pathToUtf8(got.unitFile.lexically_relative(std::filesystem::current_path())));
    add(got.unitFileSource != initial.unitFileSource,
        fmt::format("source={}", static_cast<int>(got.unitFileSource)));
    add(got.verbosity != initial.verbosity, fmt::format("v={}", got.verbosity));
    add(got.jobCount != initial.jobCount, fmt::format("j={}", got.jobCount));
    add(!got.unitToList.empty(), "unit=" + got.unitToList);
    add(!got.mainOutput.empty(), "out=" + got.mainOutput);
    add(got.commandLineMode, "cmdline");
    add(got.dump, "dump");
    add(got.dryRun, "dry");
    add(got.keepGoing, "keep");
    add(!got.positionals.empty(), "words=" + joined(got.positionals, "|"));
    return text;
}

std::string parsed(const Arguments& arguments) {
    Settings settings;
    try {
        parseCommandLine(arguments, settings);
    } catch (const std::out_of_range& error) {
        return std::string("out_of_range: ") + error.what();
    } catch (const std::invalid_argument& error) {
        return std::string("invalid_argument: ") + error.what();
    } catch (const std::runtime_error& error) {
        return std::string("runtime_error: ") + error.what();
    }
    EXPECT_EQ(console::threshold(), settings.verbosity);
    console::setThreshold(console::kDefaultThreshold);
    return described(settings);
}

TEST(CommandLine, IsReadFromLeftToRight) {
    const std::string all = fmt::format("j={}", std::max(1U, std::thread::hardware_concurrency()));
    const std::string noUnit = "invalid_argument: Option '-l' requires a unit.";
    const std::string tooLarge = "out_of_range: stoi argument out of range";
    const std::pair<Arguments, std::string> cases[] = {
        {{}, ""},
        // Modes: the highest number wins, and nothing is looked at after help.
        {{"-p"}, "mode=1"},
        {{"-U", "-p"}, "mode=2"},
        {{"--register", "--LIST-UNITS", "--list-profiles"}, "mode=4"},
        {{"--create-project", "--find-compilers"}, "mode=6"},
        {{"--version", "-u"}, "mode=7"},
        {{"-r", "-h", "-v", "1", "-f", "word"}, "mode=8"},
        {{"-l", "1"}, "mode=3 unit=1"},
        {{"--list-targets", "core", "-l", "", "-u"}, "mode=3"},
        {{"-l"}, noUnit},
        {{"-l", "-u"}, noUnit},
        // Numbers that may follow.
        {{"-verbose"}, "v=3"},
        {{"--V", "1"}, "v=1"},
        {{"-v", "9x"}, "v=9"},
        {{"-v", "-1"}, "v=3"},
        {{"-v", "0", "-v", "word"}, "v=3 words=word"},
        {{"-v", "2147483648"}, tooLarge},
        {{"-j"}, all == "j=1" ? "" : all},
        {{"-j", "-d", "-j", "0"}, "j=0 dump"},
        {{"--jobs", "4"}, "j=4"},
        {{"-j8"}, "j=8"},
        {{"--JOBS=16"}, "j=16"},
        {{"-j2147483648"}, tooLarge},
        // Paths.
        {{"-f", "a/./../b \xC3\xA4.txt"}, "file=b \xC3\xA4.txt source=1"},
        {{"--file", "-v"}, "file=-v source=1"},
        {{"-f"}, "runtime_error: unknown switch"},
        {{"app", "--out"}, "runtime_error: unknown switch"},
        {{"-o", "-d"}, "out=-d"},
        {{"-f", "b.txt", "--cmdmode"}, "file= source=2 cmdline"},
        {{"-c", "-f", "b.txt"}, "file=b.txt source=1 cmdline"},
        // Flags, what is none, and everything else.
        {{"--dump", "-n", "--keep-going"}, "dump dry keep"},
        {{"--frobnicate", "-x", "-", "--", "-file2", "-vv", "---v", "-uu", "-1"}, ""},
        {{"--jobs=", "-jx", "--jobs=x", "-c1", "--versions", "-lib"}, ""},
        {{"app", "x=-1", "", "-j", "2", "a::b"}, "j=2 words=app|x=-1||a::b"},
    };
    for (const auto& [arguments, expected] : cases) {
        EXPECT_EQ(parsed(arguments), expected) << joined(arguments, " ");
    }
}

}  // namespace
}  // namespace Vesk
