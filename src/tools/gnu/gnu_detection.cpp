// Which GNU compilers are installed.

#include "base/text.h"
#include "platform/environment.h"
#include "platform/system.h"
#include "tools/discovery/version.h"
#include "tools/gnu/gnu_toolchain.h"
#include "tools/gnu_style/gnu_style_detection.h"
#include "tools/support/target_paths.h"

namespace Vesk {

namespace {

/// The default places of the distributions for Windows.
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

/// On some systems Clang is installed as gcc, and answers most of its questions.
bool isClang(const FoundCompiler& compiler) {
    const std::string answer = askCompiler(compiler, "--version");
    return lowerCased(answer.substr(0, answer.find('\n'))).find("clang") != std::string::npos;
}

CompilerAnswer ask(const FoundCompiler& compiler) {
    if (isClang(compiler)) {
        return {};
    }
    // Distributions shorten what -dumpversion says to the first number.
    std::string version = leadingVersion(askCompiler(compiler, "-dumpfullversion"));
    if (version.empty()) {
        version = leadingVersion(askCompiler(compiler, "-dumpversion"));
    }
    return {version, askCompiler(compiler, "-dumpmachine")};
}

}  // namespace

std::vector<DetectedTool> detectGNU() {
    std::vector<std::string> directories = searchPath();
    if (platform::kWindows) {
        addWindowsPlaces(directories);
    }
    return detectGnuStyle(kGnuToolchain, directories, true, ask);
}

}  // namespace Vesk
