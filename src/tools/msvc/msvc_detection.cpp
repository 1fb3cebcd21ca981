// Finds installed Microsoft compilers.

#include <algorithm>
#include <fmt/format.h>
#include <set>
#include <tuple>

#include "base/console.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "run/capture_output.h"
#include "tools/discovery/compiler_search.h"
#include "tools/discovery/toolchain_match.h"
#include "tools/discovery/version.h"
#include "tools/msvc/msvc_matcher.h"
#include "tools/msvc/visual_studio.h"
#include "tools/msvc/windows_kits.h"
#include "tools/support/target_paths.h"

namespace Vesk {

namespace {

/// What the installer knows, including previews and build tools.
std::vector<VisualStudio> registeredInstallations(
    const std::vector<std::string>& programDirectories) {
    for (const std::string& programs : programDirectories) {
        const std::string search =
            programs + "/Microsoft Visual Studio/Installer/vswhere" + std::string(programSuffix());
        if (isFile(search)) {
            return installationsIn(captureOutput(platform::pathFromUtf8(search).make_preferred(),
                                                 "-products * -prerelease -utf8 -format json",
                                                 true));
        }
    }
    return {};
}

/// That of a developer prompt, and those whose compiler and linker are in PATH. The linker must be
/// there as well, since other programs are also called link.
std::vector<ToolSet> toolSetsOfEnvironment() {
    std::vector<std::string> directories;
    if (const auto directory = platform::environmentVariable("VCToolsInstallDir")) {
        directories.push_back(normalPath(*directory));
    }
    const std::string suffix(programSuffix());
    for (std::string& directory : searchPath()) {
        if (isFile(directory + "/cl" + suffix) && isFile(directory + "/link" + suffix)) {
            directories.push_back(std::move(directory));
        }
    }
    std::vector<ToolSet> sets;
    for (const std::string& directory : directories) {
        if (ToolSet set = toolSetAround(directory); !set.directory.empty()) {
            sets.push_back(std::move(set));
        }
    }
    return sets;
}

/// Each once, newest first.
std::vector<ToolSet> allToolSets(const std::vector<std::string>& programDirectories) {
    std::vector<VisualStudio> studios = registeredInstallations(programDirectories);
    for (const std::string& programs : programDirectories) {
        std::ranges::move(installationsBelow(programs), std::back_inserter(studios));
    }
    std::vector<ToolSet> all;
    std::set<std::string> seen;
    const auto add = [&](ToolSet& set) {
        if (seen.insert(realPath(set.directory)).second) {
            all.push_back(std::move(set));
        }
    };
    for (const VisualStudio& studio : studios) {
        std::vector<ToolSet> sets = toolSetsIn(studio);
        if (sets.empty()) {
            console::message(console::level::kDetail, console::colour::kReport,
                             "'{}' is left out: it has no C and C++ compilers.", studio.directory);
        }
        std::ranges::for_each(sets, add);
    }
    std::vector<ToolSet> others = toolSetsOfEnvironment();
    std::ranges::for_each(others, add);
    std::ranges::stable_sort(all, [](const ToolSet& a, const ToolSet& b) {
        return compareVersions(a.version, b.version) > 0;
    });
    return all;
}

/// The kits as settings of a tool, so that a build need not look for anything.
class Kits {
  public:
    explicit Kits(const std::vector<std::string>& programDirectories) {
        for (const std::string& directory : kitDirectories(programDirectories)) {
            for (const WindowsKit& kit : kitsIn(directory)) {
                takeNewer(sdk_, kit, kit.hasSdk);
                takeNewer(driverKit_, kit, kit.hasSdk && kit.hasDriverKit);
            }
        }
    }

    bool found() const { return !sdk_.directory.empty(); }

    void addTo(Context& tool) const {
        if (!found()) {
            return;
        }
        tool.addAssignment(resolvedAssignment("winsdk_path", pathValue(sdk_.directory)),
                           ModifierMode::Copy);
        tool.addAssignment(textAssignment("winsdk_version", sdk_.version), ModifierMode::Copy);
        if (driverKit_.directory == sdk_.directory) {
            tool.addAssignment(textAssignment("wdk_version", driverKit_.version),
                               ModifierMode::Copy);
        }
    }

  private:
    static void takeNewer(WindowsKit& best, const WindowsKit& kit, bool usable) {
        if (usable && (best.directory.empty() || compareVersions(kit.version, best.version) > 0)) {
            best = kit;
        }
    }

    WindowsKit sdk_;
    WindowsKit driverKit_;
};

std::string displayName(const Toolchain& toolchain, const Context& tool, const ToolSet& set) {
    const std::string name = tool.textOf("toolchain_name").value_or(toolchain.family);
    return set.studio.empty() ? name : fmt::format("{} ({})", name, set.studio);
}

}  // namespace

std::vector<DetectedTool> detectMSVC() {
    const std::vector<std::string> programs = programDirectories();
    const std::vector<ToolSet> sets = allToolSets(programs);
    if (sets.empty()) {
        return {};
    }
    const Kits kits(programs);
    std::vector<DetectedTool> tools;
    std::set<std::string> names;
    std::set<std::string_view> triples;
    for (const ToolSet& set : sets) {
        for (const Architecture& architecture : kArchitectures) {
            const std::string bin = binDirectory(set.directory, architecture);
            if (bin.empty()) {
                continue;
            }
            Toolchain toolchain = {RegisterMSVCMatcher.word(),
                                   "MSVC",
                                   set.version,
                                   std::string(architecture.triple),
                                   {set.directory, {}, {}},
                                   kNoDefault};
            if (triples.insert(architecture.triple).second) {
                toolchain.isDefault = kMachineDefault;
            }
            DetectedTool tool = detectedTool(toolchain, "msvc");
            if (!names.insert(tool.name).second) {
                continue;
            }
            tool.context->addAssignment(
                textAssignment("toolchain_name", displayName(toolchain, *tool.context, set)),
                ModifierMode::Copy);
            kits.addTo(*tool.context);
            toolchain.place.directory = bin;
            warnIfMissing(toolchain, {"link"}, "it links nothing");
            warnIfMissing(toolchain, {"lib"}, "it makes no static libraries");
            tools.push_back(std::move(tool));
        }
    }
    if (!kits.found()) {
        console::warning(
            "There is no Windows SDK: without it MSVC compiles nothing that "
            "includes its headers or those of C, and makes no resources.");
    }
    return tools;
}

}  // namespace Vesk
