// Which C3 compilers are installed.

#include <set>

#include "base/console.h"
#include "base/text.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/system.h"
#include "tools/c3/c3_matcher.h"
#include "tools/discovery/compiler_search.h"
#include "tools/discovery/toolchain_match.h"
#include "tools/discovery/triple.h"
#include "tools/discovery/version.h"
#include "tools/support/target_paths.h"

namespace Vesk {

namespace {

void addBelow(std::vector<std::string>& directories, const char* variable, const char* below) {
    const auto directory = platform::environmentVariable(variable);
    if (directory && platform::isAbsolutePath(*directory)) {
        directories.push_back(normalPath(*directory + below));
    }
}

std::vector<std::string> searchedDirectories() {
    std::vector<std::string> directories = searchPath();
    addBelow(directories, "C3C_HOME", "");
    addBelow(directories, "C3C_HOME", "/bin");
    if (platform::kWindows) {
        directories.emplace_back("C:/c3");
        addBelow(directories, "ProgramFiles", "/c3");
    } else {
        directories.insert(directories.end(), {"/usr/local/bin", "/opt/c3", "/opt/c3/bin"});
    }
    return directories;
}

/// The text behind a label: "C3 Compiler Version:       0.8.3 (...)".
std::string_view answerTo(std::string_view label, std::string_view answer) {
    const std::size_t at = answer.find(label);
    if (at == std::string_view::npos) {
        return {};
    }
    const std::string_view rest = answer.substr(at + label.size());
    return trimmed(rest.substr(0, rest.find('\n')));
}

}  // namespace

std::vector<DetectedTool> detectC3() {
    std::vector<DetectedTool> tools;
    std::set<std::string> names;
    for (const FoundCompiler& compiler : findCompilers("c3c", searchedDirectories())) {
        const std::string answer = askCompiler(compiler, "--version");
        Toolchain toolchain = {RegisterC3Matcher.word(),
                               "C3",
                               leadingVersion(answerTo("C3 Compiler Version:", answer)),
                               std::string(answerTo("LLVM default target:", answer)),
                               compiler.place,
                               tools.empty() ? kMachineDefault : kNoDefault};
        if (toolchain.version.empty()) {
            console::message(console::level::kDetail, console::colour::kReport,
                             "'{}' is left out: it does not answer as the C3 compiler does.",
                             compiler.path);
            continue;
        }
        if (toolchain.triple.empty()) {
            toolchain.triple = nativeTriple();
        }
        DetectedTool tool = detectedTool(toolchain, "c3c");
        if (names.insert(tool.name).second) {
            tools.push_back(std::move(tool));
        }
    }
    return tools;
}

}  // namespace Vesk
