// Looking for installed compilers by their names.
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

/// The file or directory behind all links; the path itself where that cannot be told.
std::string realPath(const std::string& path);

/// The prefix and suffix in a program's name, "x86_64-w64-mingw32-gcc-12-posix" for the word "gcc".
/// False for programs that only begin or end alike, as "gcc-ar" and "c99-gcc" do.
bool splitCompilerName(std::string_view name, std::string_view word, ToolchainPlace& place);

/// The compilers in the directories, each file once, whatever names and links lead to it: first the
/// directory's plain name, then newer versions before older ones. What runs other compilers, ccache
/// and its like, is none.
std::vector<FoundCompiler> findCompilers(std::string_view word,
                                         const std::vector<std::string>& directories);

/// What the compiler answers; empty when it fails.
std::string askCompiler(const FoundCompiler& compiler, std::string_view arguments);

/// The text as the name of a tool: a dash for what names may not hold.
std::string identifierOf(std::string text);

/// A compiler that has told about itself.
struct Toolchain {
    std::string toolType;
    std::string family;  ///< "GCC"
    std::string version;
    std::string triple;
    ToolchainPlace place;
    const char* isDefault;  ///< a value of toolchain_default
};

/// What a compiler says of itself; an empty version where it does not answer as one of its family.
struct CompilerAnswer {
    std::string version;
    std::string triple;
};

/// How compilers of one family are found.
struct CompilerFamily {
    const char* toolType;
    const char* name;  ///< "GCC"
    std::string_view word;
    CompilerAnswer (*ask)(const FoundCompiler& compiler);
    bool defaultForEachTriple = false;  ///< the first of each triple, or the first of all
    const char* compiler = name;        ///< what messages call it
};

/// Those in the directories that answer, each version and triple once. What does not answer is left
/// out with a message.
std::vector<Toolchain> answeringCompilers(const CompilerFamily& family,
                                          const std::vector<std::string>& directories);

/// Adds what lies below the directory that an environment variable names, if that is absolute.
void addBelow(std::vector<std::string>& directories, const char* variable, const char* below);

/// As the registry holds it.
DetectedTool detectedTool(const Toolchain& toolchain, std::string_view word);

/// Warns about a program that belongs to a toolchain and is not there.
void warnIfMissing(const Toolchain& toolchain, std::initializer_list<std::string_view> programs,
                   const char* use);

}  // namespace Vesk
