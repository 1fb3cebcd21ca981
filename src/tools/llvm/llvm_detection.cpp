// Which Clang compilers are installed.

#include <algorithm>
#include <system_error>

#include "platform/directories.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/system.h"
#include "tools/discovery/version.h"
#include "tools/gnu_style/gnu_style_detection.h"
#include "tools/llvm/llvm_toolchain.h"
#include "tools/support/target_paths.h"

namespace Vesk {

namespace {

/// The directories of Linux distributions, one per version, newest first.
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
CompilerAnswer ask(const FoundCompiler& compiler) {
    constexpr std::string_view kBefore = "clang version ";
    const std::string answer = askCompiler(compiler, "--version");
    const std::size_t at = answer.find(kBefore);
    if (at == std::string::npos) {
        return {};
    }
    return {leadingVersion(std::string_view(answer).substr(at + kBefore.size())),
            askCompiler(compiler, "-print-target-triple")};
}

}  // namespace

std::vector<DetectedTool> detectLLVM() {
    std::vector<std::string> directories = searchPath();
    if (platform::kWindows) {
        addWindowsPlaces(directories);
    } else {
        addVersionedDirectories(directories);
    }
    return detectGnuStyle(kLlvmToolchain, directories, false, ask);
}

}  // namespace Vesk
