// Which Clang compilers are installed.

#include <algorithm>
#include <set>
#include <system_error>

#include "base/console.h"
#include "platform/directories.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/system.h"
#include "tools/discovery/compiler_search.h"
#include "tools/discovery/toolchain_match.h"
#include "tools/discovery/version.h"
#include "tools/llvm/llvm_matcher.h"
#include "tools/support/target_paths.h"

namespace Vesk {

namespace {

/// The directories of Linux distributions, one for each version, newest first.
void addVersionedDirectories(std::vector<std::string>& directories) {
    constexpr std::string_view kStart = "llvm-";
    std::vector<std::string> versions;
    std::error_code ignored;
    for (const platform::DirectoryEntry& entry : platform::listDirectory("/usr/lib", ignored)) {
        if (entry.name.starts_with(kStart)) {
            versions.push_back(entry.name.substr(kStart.size()));
        }
    }
    std::ranges::sort(versions, [](const std::string& a, const std::string& b) {
        return compareVersions(a, b) > 0;
    });
    for (const std::string& version : versions) {
        directories.push_back("/usr/lib/llvm-" + version + "/bin");
    }
}

void addWindowsPlaces(std::vector<std::string>& directories) {
    for (const char* variable : {"ProgramFiles", "ProgramW6432", "ProgramFiles(x86)"}) {
        if (const auto programs = platform::environmentVariable(variable)) {
            directories.push_back(normalPath(*programs + "/LLVM/bin"));
        }
    }
    directories.emplace_back("C:/msys64/clang64/bin");
}

/// "Ubuntu clang version 14.0.6-1", "Apple clang version 15.0.0 (clang-1500.3.9.4)".
std::string versionOf(const FoundCompiler& compiler) {
    constexpr std::string_view kBefore = "clang version ";
    const std::string answer = askCompiler(compiler, "--version");
    const std::size_t at = answer.find(kBefore);
    return at == std::string::npos
               ? std::string()
               : leadingVersion(std::string_view(answer).substr(at + kBefore.size()));
}

}  // namespace

std::vector<DetectedTool> detectLLVM() {
    std::vector<std::string> directories = searchPath();
    // Where there is a GCC, it is the machine's compiler.
    const bool hasGcc = !findCompilers("gcc", directories).empty();
    if (platform::kWindows) {
        addWindowsPlaces(directories);
    } else {
        addVersionedDirectories(directories);
    }
    std::vector<DetectedTool> tools;
    std::set<std::string> names;
    for (const FoundCompiler& compiler : findCompilers("clang", directories)) {
        Toolchain toolchain = {RegisterLLVMMatcher.word(),
                               "Clang",
                               versionOf(compiler),
                               askCompiler(compiler, "-print-target-triple"),
                               compiler.place,
                               kNoDefault};
        if (toolchain.version.empty() || toolchain.triple.empty()) {
            console::message(console::level::kDetail, console::colour::kReport,
                             "'{}' is left out: it does not answer as Clang does.", compiler.path);
            continue;
        }
        if (tools.empty()) {
            toolchain.isDefault = hasGcc ? kFamilyDefault : kMachineDefault;
        }
        DetectedTool tool = detectedTool(toolchain, "clang");
        if (!names.insert(tool.name).second) {
            continue;
        }
        warnIfMissing(toolchain, {"clang++"}, "it compiles C only");
        warnIfMissing(toolchain, {"llvm-ar", "ar"}, "it makes no static libraries");
        tools.push_back(std::move(tool));
    }
    return tools;
}

}  // namespace Vesk
