#include "tools/msvc/visual_studio.h"

#include <algorithm>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "base/ci_string.h"
#include "platform/environment.h"
#include "tools/discovery/toolchain_programs.h"
#include "tools/msvc/version_directories.h"
#include "tools/support/target_paths.h"

namespace Vesk {

namespace {

constexpr std::string_view kToolSets = "/VC/Tools/MSVC";

/// The program directories for hosts that this machine can be.
std::vector<std::string_view> hostDirectories() {
    const std::string own = platform::environmentVariable("PROCESSOR_ARCHITECTURE").value_or("");
    if (equalsIgnoringCase(own, "ARM64")) {
        return {"HostARM64", "Hostarm64", "Hostx64", "Hostx86"};
    }
    if (equalsIgnoringCase(own, "x86")) {
        return {"Hostx86"};
    }
    return {"Hostx64", "HostX64", "Hostx86", "HostX86"};
}

bool hasCompiler(const std::string& toolSet) {
    return std::ranges::any_of(kArchitectures, [&toolSet](const Architecture& architecture) {
        return !binDirectory(toolSet, architecture).empty();
    });
}

std::string textIn(const nlohmann::json& object, const char* name) {
    const auto value = object.find(name);
    return value != object.end() && value->is_string() ? value->get<std::string>() : std::string();
}

std::string lastPart(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

}  // namespace

std::vector<VisualStudio> installationsIn(std::string_view json) {
    std::vector<VisualStudio> installations;
    const auto answer = nlohmann::json::parse(json, nullptr, false);
    if (!answer.is_array()) {
        return installations;
    }
    for (const auto& each : answer) {
        const std::string path = each.is_object() ? textIn(each, "installationPath") : "";
        if (!path.empty()) {
            installations.push_back({normalPath(path), textIn(each, "displayName")});
        }
    }
    return installations;
}

std::vector<VisualStudio> installationsBelow(const std::string& programDirectory) {
    std::vector<VisualStudio> installations;
    const std::string all = programDirectory + "/Microsoft Visual Studio";
    for (const std::string& year : versionDirectories(all)) {
        for (const std::string& edition : subdirectories(all + "/" + year)) {
            installations.push_back({fmt::format("{}/{}/{}", all, year, edition),
                                     fmt::format("Visual Studio {} {}", edition, year)});
        }
    }
    return installations;
}

std::vector<ToolSet> toolSetsIn(const VisualStudio& studio) {
    std::vector<ToolSet> sets;
    const std::string all = studio.directory + std::string(kToolSets);
    for (const std::string& version : versionDirectories(all)) {
        ToolSet set = {all + "/" + version, version, studio.name};
        if (hasCompiler(set.directory)) {
            sets.push_back(std::move(set));
        }
    }
    return sets;
}

ToolSet toolSetAround(const std::string& directory) {
    std::string at = directory;
    // bin/Hostx64/x64 is the deepest of its directories.
    for (int level = 0; level < 4 && at.find('/') != std::string::npos; ++level) {
        const std::string version = lastPart(at);
        if (!version.empty() && version[0] >= '0' && version[0] <= '9' &&
            isDirectory(at + "/include") && isDirectory(at + "/bin")) {
            return {at, version, {}};
        }
        at.resize(at.rfind('/'));
    }
    return {};
}

std::string binDirectory(const std::string& toolSet, const Architecture& architecture,
                         std::string_view compiler) {
    for (const std::string_view host : hostDirectories()) {
        std::string directory = fmt::format("{}/bin/{}/{}", toolSet, host, architecture.directory);
        if (isFile(fmt::format("{}/{}{}", directory, compiler, programSuffix()))) {
            return directory;
        }
    }
    return {};
}

}  // namespace Vesk
