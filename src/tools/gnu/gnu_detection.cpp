// Which GNU compilers are installed.

#include <set>

#include "base/console.h"
#include "base/text.h"
#include "platform/environment.h"
#include "platform/system.h"
#include "tools/discovery/compiler_search.h"
#include "tools/discovery/toolchain_match.h"
#include "tools/discovery/triple.h"
#include "tools/discovery/version.h"
#include "tools/gnu/gnu_matcher.h"
#include "tools/support/target_paths.h"

namespace Vesk {

namespace {

/// Where the distributions for Windows put it when nobody chooses another place.
void addWindowsPlaces(std::vector<std::string>& directories) {
    for (const char* directory : {"C:/msys64/ucrt64/bin", "C:/msys64/mingw64/bin", "C:/mingw64/bin",
                                  "C:/MinGW/bin", "C:/TDM-GCC-64/bin", "C:/Strawberry/c/bin"}) {
        directories.emplace_back(directory);
    }
    if (const auto data = platform::environmentVariable("ProgramData")) {
        directories.push_back(normalPath(*data + "/mingw64/mingw64/bin"));
    }
    if (const auto home = platform::environmentVariable("USERPROFILE")) {
        for (const char* package : {"gcc", "mingw", "mingw-winlibs"}) {
            directories.push_back(normalPath(*home + "/scoop/apps/" + package + "/current/bin"));
        }
    }
}

/// Clang goes by the name of gcc on some systems, and answers most of its questions.
bool isClang(const FoundCompiler& compiler) {
    const std::string answer = askCompiler(compiler, "--version");
    return lowerCased(answer.substr(0, answer.find('\n'))).find("clang") != std::string::npos;
}

std::string versionOf(const FoundCompiler& compiler) {
    // Distributions cut what -dumpversion says to the first number.
    std::string version = leadingVersion(askCompiler(compiler, "-dumpfullversion"));
    return version.empty() ? leadingVersion(askCompiler(compiler, "-dumpversion")) : version;
}

}  // namespace

std::vector<DetectedTool> detectGNU() {
    std::vector<std::string> directories = searchPath();
    if (platform::kWindows) {
        addWindowsPlaces(directories);
    }
    std::vector<DetectedTool> tools;
    std::set<std::string> triples;
    std::set<std::string> names;
    for (const FoundCompiler& compiler : findCompilers("gcc", directories)) {
        Toolchain toolchain = {RegisterGNUMatcher.word(),
                               "GCC",
                               versionOf(compiler),
                               askCompiler(compiler, "-dumpmachine"),
                               compiler.place,
                               kNoDefault};
        if (toolchain.version.empty() || toolchain.triple.empty() || isClang(compiler)) {
            console::message(console::level::kDetail, console::colour::kReport,
                             "'{}' is left out: it does not answer as GCC does.", compiler.path);
            continue;
        }
        // The first of each kind is what a user gets who types its name.
        if (triples.insert(toolchain.triple).second) {
            toolchain.isDefault = kMachineDefault;
        }
        DetectedTool tool = detectedTool(toolchain, "gcc");
        if (!names.insert(tool.name).second) {
            continue;
        }
        warnIfMissing(toolchain, {"g++"}, "it compiles C only");
        warnIfMissing(toolchain, {"ar", "gcc-ar"}, "it makes no static libraries");
        tools.push_back(std::move(tool));
    }
    return tools;
}

}  // namespace Vesk
