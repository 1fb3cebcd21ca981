#include "tools/msvc/windows_kits.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/exception.h"
#include "base/text.h"
#include "platform/environment.h"
#include "platform/registry.h"
#include "tools/discovery/toolchain_programs.h"
#include "tools/discovery/version.h"
#include "tools/msvc/version_directories.h"
#include "tools/support/target_paths.h"

namespace Vesk {

namespace {

void addDirectory(std::vector<std::string>& directories, std::string directory) {
    if (std::ranges::find(directories, directory) == directories.end() && isDirectory(directory)) {
        directories.push_back(std::move(directory));
    }
}

/// 32-bit and 64-bit installers have written these keys.
void addRegisteredDirectories(std::vector<std::string>& directories) {
    struct Value {
        const char* key;
        const char* name;
    };
    constexpr Value kValues[] = {
        {R"(SOFTWARE\Microsoft\Windows Kits\Installed Roots)", "KitsRoot10"},
        {R"(SOFTWARE\Microsoft\Microsoft SDKs\Windows\v10.0)", "InstallationDirectory"},
    };
    for (const Value& value : kValues) {
        for (const auto view : {platform::RegistryView::Bits32, platform::RegistryView::Bits64}) {
            if (const auto directory = platform::registryText(value.key, value.name, view)) {
                addDirectory(directories, normalPath(*directory));
            }
        }
    }
}

bool hasSdk(const WindowsKit& kit) {
    const std::string directory = kit.include("um");
    return isFile(directory + "/Windows.h") || isFile(directory + "/windows.h");
}

bool hasDriverKit(const WindowsKit& kit) {
    const auto hasLibraries = [&kit](const Architecture& architecture) {
        return isDirectory(kit.library("km", architecture));
    };
    return isDirectory(kit.include("km")) && std::ranges::any_of(kArchitectures, hasLibraries);
}

bool meets(const WindowsKit& kit, const KitWish& wish) {
    return (wish.version.empty() || versionFits(kit.version, wish.version)) && kit.hasSdk &&
           (!wish.forDrivers || kit.hasDriverKit);
}

std::string listed(const std::vector<WindowsKit>& kits) {
    std::vector<std::string> names;
    for (const WindowsKit& kit : kits) {
        const char* parts = !kit.hasSdk ? " (without SDK)" : kit.hasDriverKit ? " (with WDK)" : "";
        names.push_back(kit.version + parts);
    }
    return names.empty() ? "none" : joined(names, ", ");
}

}  // namespace

std::string WindowsKit::include(std::string_view part) const {
    return fmt::format("{}/Include/{}/{}", directory, version, part);
}

std::string WindowsKit::library(std::string_view part, const Architecture& architecture) const {
    return fmt::format("{}/Lib/{}/{}/{}", directory, version, part, architecture.directory);
}

std::vector<std::string> kitDirectories(const std::vector<std::string>& programDirectories) {
    std::vector<std::string> directories;
    addRegisteredDirectories(directories);
    for (const std::string& programs : programDirectories) {
        addDirectory(directories, programs + "/Windows Kits/10");
    }
    return directories;
}

std::vector<WindowsKit> kitsIn(const std::string& directory) {
    std::vector<WindowsKit> kits;
    for (const std::string& version : versionDirectories(directory + "/Include")) {
        WindowsKit kit = {directory, version};
        kit.hasSdk = hasSdk(kit);
        kit.hasDriverKit = hasDriverKit(kit);
        if (kit.hasSdk || kit.hasDriverKit) {
            kits.push_back(std::move(kit));
        }
    }
    return kits;
}

std::vector<std::string> frameworkVersions(const std::string& kitDirectory,
                                           std::string_view framework) {
    return versionDirectories(fmt::format("{}/Include/wdf/{}", kitDirectory, framework));
}

WindowsKit chooseKit(const KitWish& wish, const std::vector<std::string>& programDirectories) {
    const std::vector<std::string> directories = wish.directory.empty()
                                                     ? kitDirectories(programDirectories)
                                                     : std::vector<std::string>{wish.directory};
    std::vector<WindowsKit> all;
    for (const std::string& directory : directories) {
        std::ranges::move(kitsIn(directory), std::back_inserter(all));
    }
    std::ranges::stable_sort(all, [](const WindowsKit& a, const WindowsKit& b) {
        return compareVersions(a.version, b.version) > 0;
    });
    const auto best =
        std::ranges::find_if(all, [&wish](const WindowsKit& kit) { return meets(kit, wish); });
    if (best != all.end()) {
        return *best;
    }
    if (wish.directory.empty() && wish.version.empty() && !wish.forDrivers) {
        return {};
    }
    throw VeskException(fmt::format(
        "There is no Windows {}{}{} in {}. Installed: {}. Install it, or correct winsdk_path, "
        "winsdk_version or wdk_version.",
        wish.forDrivers ? "Driver Kit together with an SDK" : "SDK",
        wish.version.empty() ? "" : " of version ", wish.version,
        directories.empty() ? "the registry's or the usual place"
                            : "'" + joined(directories, "', '") + "'",
        listed(all)));
}

std::vector<std::string> programDirectories() {
    std::vector<std::string> directories;
    for (const char* variable : {"ProgramFiles(x86)", "ProgramFiles", "ProgramW6432"}) {
        if (const auto directory = platform::environmentVariable(variable);
            directory && !directory->empty()) {
            addDirectory(directories, normalPath(*directory));
        }
    }
    return directories;
}

}  // namespace Vesk
