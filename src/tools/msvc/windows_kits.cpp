#include "tools/msvc/windows_kits.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/exception.h"
#include "base/text.h"
#include "platform/environment.h"
#include "platform/registry.h"
#include "tools/discovery/toolchain_programs.h"
#include "tools/discovery/version.h"
#include "tools/msvc/version_folders.h"
#include "tools/support/target_paths.h"

namespace Vesk {

namespace {

void addFolder(std::vector<std::string>& folders, std::string folder) {
    if (std::ranges::find(folders, folder) == folders.end() && isFolder(folder)) {
        folders.push_back(std::move(folder));
    }
}

/// Installers of both widths have written these keys.
void addRegisteredFolders(std::vector<std::string>& folders) {
    struct Value {
        const char* key;
        const char* name;
    };
    constexpr Value kValues[] = {
        {R"(SOFTWARE\Microsoft\Windows Kits\Installed Roots)", "KitsRoot10"},
        {R"(SOFTWARE\Microsoft\Microsoft SDKs\Windows\v10.0)", "InstallationFolder"},
    };
    for (const Value& value : kValues) {
        for (const auto view : {platform::RegistryView::Bits32, platform::RegistryView::Bits64}) {
            if (const auto folder = platform::registryText(value.key, value.name, view)) {
                addFolder(folders, normalPath(*folder));
            }
        }
    }
}

bool hasSdk(const WindowsKit& kit) {
    const std::string folder = kit.include("um");
    return isFile(folder + "/Windows.h") || isFile(folder + "/windows.h");
}

bool hasDriverKit(const WindowsKit& kit) {
    const auto hasLibraries = [&kit](const Architecture& architecture) {
        return isFolder(kit.library("km", architecture));
    };
    return isFolder(kit.include("km")) && std::ranges::any_of(kArchitectures, hasLibraries);
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
    return fmt::format("{}/Include/{}/{}", folder, version, part);
}

std::string WindowsKit::library(std::string_view part, const Architecture& architecture) const {
    return fmt::format("{}/Lib/{}/{}/{}", folder, version, part, architecture.folder);
}

std::vector<std::string> kitFolders(const std::vector<std::string>& programFolders) {
    std::vector<std::string> folders;
    addRegisteredFolders(folders);
    for (const std::string& programs : programFolders) {
        addFolder(folders, programs + "/Windows Kits/10");
    }
    return folders;
}

std::vector<WindowsKit> kitsIn(const std::string& folder) {
    std::vector<WindowsKit> kits;
    for (const std::string& version : versionFolders(folder + "/Include")) {
        WindowsKit kit = {folder, version};
        kit.hasSdk = hasSdk(kit);
        kit.hasDriverKit = hasDriverKit(kit);
        if (kit.hasSdk || kit.hasDriverKit) {
            kits.push_back(std::move(kit));
        }
    }
    return kits;
}

std::vector<std::string> frameworkVersions(const std::string& kitFolder,
                                           std::string_view framework) {
    return versionFolders(fmt::format("{}/Include/wdf/{}", kitFolder, framework));
}

WindowsKit chooseKit(const KitWish& wish, const std::vector<std::string>& programFolders) {
    const std::vector<std::string> folders =
        wish.folder.empty() ? kitFolders(programFolders) : std::vector<std::string>{wish.folder};
    std::vector<WindowsKit> all;
    for (const std::string& folder : folders) {
        std::ranges::move(kitsIn(folder), std::back_inserter(all));
    }
    std::ranges::stable_sort(all, [](const WindowsKit& a, const WindowsKit& b) {
        return compareVersions(a.version, b.version) > 0;
    });
    const auto best =
        std::ranges::find_if(all, [&wish](const WindowsKit& kit) { return meets(kit, wish); });
    if (best != all.end()) {
        return *best;
    }
    if (wish.folder.empty() && wish.version.empty() && !wish.forDrivers) {
        return {};
    }
    throw VeskException(fmt::format(
        "There is no Windows {}{}{} in {}. There are: {}. Install it, or correct winsdk_path, "
        "winsdk_version or wdk_version.",
        wish.forDrivers ? "Driver Kit together with an SDK" : "SDK",
        wish.version.empty() ? "" : " of version ", wish.version,
        folders.empty() ? "the registry's or the usual place" : "'" + joined(folders, "', '") + "'",
        listed(all)));
}

std::vector<std::string> programFolders() {
    std::vector<std::string> folders;
    for (const char* variable : {"ProgramFiles(x86)", "ProgramFiles", "ProgramW6432"}) {
        if (const auto folder = platform::environmentVariable(variable);
            folder && !folder->empty()) {
            addFolder(folders, normalPath(*folder));
        }
    }
    return folders;
}

}  // namespace Vesk
