// Looks for installed compilers by their names.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/discovery/toolchain_programs.h"
#include "tools/toolchain_detection.h"

namespace Vesk {

struct FoundCompiler {
    std::string path;
    ToolchainPlace place;
};

/// The file or directory that links lead to; the path itself if that cannot be found out.
std::string realPath(const std::string& path);

/// The prefix and suffix in a program's name, as in "x86_64-w64-mingw32-gcc-12-posix" for the word
/// "gcc". False for programs whose names are only similar, such as "gcc-ar" and "c99-gcc".
bool splitCompilerName(std::string_view name, std::string_view word, ToolchainPlace& place);

/// The compilers in the directories, each file once, whatever names and links lead to it: first the
/// directory's plain name, then newer versions before older ones. Programs that run other
/// compilers, such as ccache, are left out.
std::vector<FoundCompiler> findCompilers(std::string_view word,
                                         const std::vector<std::string>& directories);

/// What the program answers; empty if it fails.
std::string askCompiler(const FoundCompiler& compiler, std::string_view arguments);

/// The text as the name of a tool: a dash replaces anything that names may not contain.
std::string identifierOf(std::string text);

/// A compiler with what it says about itself.
struct Toolchain {
    std::string toolType;
    std::string family;  ///< "GCC"
    std::string version;
    std::string triple;
    ToolchainPlace place;
    const char* isDefault;  ///< a value of toolchain_default
};

/// What a compiler says about itself. The version is empty if it does not answer like its family.
struct CompilerAnswer {
    std::string version;
    std::string triple;
};

/// How to find the compilers of one family.
struct CompilerFamily {
    const char* toolType;
    const char* name;  ///< "GCC"
    std::string_view word;
    CompilerAnswer (*ask)(const FoundCompiler& compiler);
    bool defaultForEachTriple = false;  ///< the first of each triple, or the first of all
    const char* compiler = name;        ///< its name in messages
};

/// The compilers in the directories that answer, each version and triple once. Those that do not
/// answer are left out with a message.
std::vector<Toolchain> answeringCompilers(const CompilerFamily& family,
                                          const std::vector<std::string>& directories);

/// Adds what lies below the directory that an environment variable names, if that path is absolute.
void addBelow(std::vector<std::string>& directories, const char* variable, const char* below);

/// In the form that the registry holds.
DetectedTool detectedTool(const Toolchain& toolchain, std::string_view word);

/// Warns about a missing program that belongs to a toolchain.
void warnIfMissing(const Toolchain& toolchain, std::initializer_list<std::string_view> programs,
                   const char* use);

}  // namespace Vesk
