// Which C3 compilers are installed.

#include "base/text.h"
#include "platform/system.h"
#include "tools/c3/c3_matcher.h"
#include "tools/discovery/compiler_search.h"
#include "tools/discovery/triple.h"
#include "tools/discovery/version.h"
#include "tools/support/target_paths.h"

namespace Vesk {

namespace {

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

/// The text behind a label: "C3 Compiler Version: 0.8.3 (...)".
std::string_view answerTo(std::string_view label, std::string_view answer) {
    const std::size_t at = answer.find(label);
    if (at == std::string_view::npos) {
        return {};
    }
    const std::string_view rest = answer.substr(at + label.size());
    return trimmed(rest.substr(0, rest.find('\n')));
}

CompilerAnswer ask(const FoundCompiler& compiler) {
    const std::string answer = askCompiler(compiler, "--version");
    std::string triple(answerTo("LLVM default target:", answer));
    return {leadingVersion(answerTo("C3 Compiler Version:", answer)),
            triple.empty() ? std::string(nativeTriple()) : triple};
}

}  // namespace

std::vector<DetectedTool> detectC3() {
    const CompilerFamily family = {
        C3Toolchain::kTraits.toolType, "C3", "c3c", ask, false, "the C3 compiler"};
    std::vector<DetectedTool> tools;
    for (const Toolchain& toolchain : answeringCompilers(family, searchedDirectories())) {
        tools.push_back(detectedTool(toolchain, family.word));
    }
    return tools;
}

}  // namespace Vesk
