#include "tools/discovery/compiler_search.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <set>
#include <system_error>
#include <utility>

#include "base/console.h"
#include "base/text.h"
#include "platform/directories.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/system.h"
#include "run/capture_output.h"
#include "tools/discovery/triple.h"
#include "tools/discovery/version.h"
#include "tools/support/target_paths.h"

namespace Vesk {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kLaunchers[] = {"ccache", "distcc", "sccache", "icecc"};

/// The name of a file without the system's suffix for programs.
std::string_view stemOf(std::string_view name) noexcept {
    const std::string_view suffix = programSuffix();
    const bool ends = name.size() > suffix.size() &&
                      equalsIgnoringCase(name.substr(name.size() - suffix.size()), suffix);
    return ends ? name.substr(0, name.size() - suffix.size()) : std::string_view();
}

bool isLauncher(std::string_view name) noexcept {
    return std::ranges::find(kLaunchers, name) != std::end(kLaunchers);
}

/// "-12", "-12.2", "-posix", "-12-posix": what distributions append to a compiler's name.
bool isSuffix(std::string_view text) noexcept {
    while (!text.empty()) {
        if (text.front() != '-') {
            return false;
        }
        text.remove_prefix(1);
        const std::string_view part = text.substr(0, text.find('-'));
        const bool number =
            !part.empty() && part.find_first_not_of("0123456789.") == std::string_view::npos;
        if (!number && part != "posix" && part != "win32") {
            return false;
        }
        text.remove_prefix(part.size());
    }
    return true;
}

bool isPrefix(std::string_view text) noexcept {
    return text.empty() ||
           (text.size() > 1 && text.back() == '-' && text != "c89-" && text != "c99-");
}

std::vector<FoundCompiler> compilersIn(const std::string& directory, std::string_view word) {
    std::vector<FoundCompiler> found;
    std::error_code ignored;
    for (const platform::DirectoryEntry& entry :
         platform::listDirectory(platform::pathFromUtf8(directory), ignored)) {
        FoundCompiler compiler{directory + "/" + entry.name, {directory, {}, {}}};
        if (splitCompilerName(stemOf(entry.name), word, compiler.place) && isFile(compiler.path)) {
            found.push_back(std::move(compiler));
        }
    }
    std::ranges::sort(found, [](const FoundCompiler& a, const FoundCompiler& b) {
        if (a.place.prefix != b.place.prefix) {
            return a.place.prefix < b.place.prefix;
        }
        if (a.place.suffix.empty() || b.place.suffix.empty()) {
            return a.place.suffix.size() < b.place.suffix.size();
        }
        const auto order = compareVersions(leadingVersion(a.place.suffix.substr(1)),
                                           leadingVersion(b.place.suffix.substr(1)));
        return order != 0 ? order > 0 : a.place.suffix < b.place.suffix;
    });
    return found;
}

/// The command interpreter of Windows misreads a quoted path that contains one of these.
bool confusesInterpreter(std::string_view path) noexcept {
    return platform::kWindows && path.find_first_of("&()@^|<>") != std::string_view::npos;
}

}  // namespace

std::string realPath(const std::string& path) {
    std::error_code error;
    const fs::path real = platform::canonicalPath(platform::pathFromUtf8(path), error);
    return error ? path : normalPath(platform::pathToUtf8(real));
}

bool splitCompilerName(std::string_view name, std::string_view word, ToolchainPlace& place) {
    const std::size_t at = name.rfind(word);
    if (at == std::string_view::npos) {
        return false;
    }
    const std::string_view prefix = name.substr(0, at);
    const std::string_view suffix = name.substr(at + word.size());
    if (!isPrefix(prefix) || !isSuffix(suffix)) {
        return false;
    }
    place.prefix = prefix;
    place.suffix = suffix;
    return true;
}

std::vector<FoundCompiler> findCompilers(std::string_view word,
                                         const std::vector<std::string>& directories) {
    std::vector<FoundCompiler> all;
    std::set<std::string> searched;
    std::set<std::string> seen;
    for (const std::string& directory : directories) {
        if (isLauncher(directory.substr(directory.rfind('/') + 1)) ||
            !searched.insert(realPath(directory)).second) {
            continue;
        }
        for (FoundCompiler& compiler : compilersIn(directory, word)) {
            const std::string real = realPath(compiler.path);
            const std::string_view realName = std::string_view(real).substr(real.rfind('/') + 1);
            if (!isLauncher(platform::kWindows ? stemOf(realName) : realName) &&
                seen.insert(real).second) {
                all.push_back(std::move(compiler));
            }
        }
    }
    return all;
}

std::string askCompiler(const FoundCompiler& compiler, std::string_view arguments) {
    const fs::path path = platform::pathFromUtf8(compiler.path).make_preferred();
    if (!confusesInterpreter(compiler.path)) {
        return captureOutput(path, arguments, true);
    }
    const std::string before = platform::environmentVariable("PATH").value_or("");
    platform::setEnvironmentVariable(
        "PATH", platform::pathToUtf8(path.parent_path()) + platform::kPathListSeparator + before);
    std::string answer = captureOutput(path.filename(), arguments, true);
    platform::setEnvironmentVariable("PATH", before);
    return answer;
}

std::string identifierOf(std::string text) {
    for (char& c : text) {
        const bool allowed = (c >= '0' && c <= '9') ||
                             (asciiLower(c) >= 'a' && asciiLower(c) <= 'z') || c == '_' || c == '-';
        c = allowed ? c : '-';
    }
    return text;
}

std::vector<Toolchain> answeringCompilers(const CompilerFamily& family,
                                          const std::vector<std::string>& directories) {
    std::vector<Toolchain> toolchains;
    std::set<std::string> triples;
    std::set<std::pair<std::string, std::string>> seen;
    for (const FoundCompiler& compiler : findCompilers(family.word, directories)) {
        const CompilerAnswer answer = family.ask(compiler);
        if (answer.version.empty() || answer.triple.empty()) {
            console::message(console::level::kDetail, console::colour::kReport,
                             "'{}' is left out: it does not answer as {} does.", compiler.path,
                             family.compiler);
            continue;
        }
        // The first of each kind is what a user gets by typing its name.
        const bool isFirst =
            triples.insert(family.defaultForEachTriple ? answer.triple : std::string()).second;
        if (seen.emplace(answer.version, answer.triple).second) {
            toolchains.push_back({family.toolType, family.name, answer.version, answer.triple,
                                  compiler.place, isFirst ? kMachineDefault : kNoDefault});
        }
    }
    return toolchains;
}

void addBelow(std::vector<std::string>& directories, const char* variable, const char* below) {
    const auto directory = platform::environmentVariable(variable);
    if (directory && platform::isAbsolutePath(*directory)) {
        directories.push_back(normalPath(*directory + below));
    }
}

DetectedTool detectedTool(const Toolchain& toolchain, std::string_view word) {
    auto context = std::make_shared<Context>();
    const auto add = [&context](const char* name, const std::string& text) {
        context->addAssignment(textAssignment(name, text), ModifierMode::Copy);
    };
    const bool native = isNativeTriple(toolchain.triple);
    add("tool_type", toolchain.toolType);
    add("toolchain_name",
        toolchain.family + " " + toolchain.version + (native ? "" : " for " + toolchain.triple));
    context->addAssignment(
        resolvedAssignment("toolchain_path", pathValue(toolchain.place.directory)),
        ModifierMode::Copy);
    add("toolchain_version", toolchain.version);
    add("toolchain_target", toolchain.triple);
    add("toolchain_prefix", toolchain.place.prefix);
    add("toolchain_suffix", toolchain.place.suffix);
    add("toolchain_default", toolchain.isDefault);
    const std::vector<std::string> path = searchPath();
    return {identifierOf(fmt::format("{}-{}-{}", word, toolchain.version, toolchain.triple)),
            context, std::ranges::find(path, toolchain.place.directory) != path.end()};
}

void warnIfMissing(const Toolchain& toolchain, std::initializer_list<std::string_view> programs,
                   const char* use) {
    ToolchainPrograms finder("");
    if (finder.find(toolchain.place, programs).empty()) {
        console::warning("{} {} in '{}' has no '{}{}': {}.", toolchain.family, toolchain.version,
                         toolchain.place.directory, toolchain.place.prefix, *programs.begin(), use);
    }
}

}  // namespace Vesk
