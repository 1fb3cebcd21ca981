#include "tools/msvc/driver_settings.h"

#include <algorithm>
#include <fmt/format.h>
#include <utility>

#include "base/exception.h"
#include "base/text.h"
#include "tools/discovery/version.h"

namespace Vesk {

namespace {

constexpr std::pair<const char*, DriverModel> kModels[] = {
    {"wdm", DriverModel::Wdm}, {"kmdf", DriverModel::Kmdf}, {"umdf", DriverModel::Umdf}};

const char* frameworkOf(DriverModel model) noexcept {
    return model == DriverModel::Kmdf ? "kmdf" : model == DriverModel::Umdf ? "umdf" : nullptr;
}

std::string chooseFramework(const Context& target, DriverModel model,
                            const MsvcDirectories& directories) {
    const char* framework = frameworkOf(model);
    if (framework == nullptr) {
        return {};
    }
    const char* variable = model == DriverModel::Kmdf ? "KMDF_VERSION" : "UMDF_VERSION";
    const std::string asked = target.textOf(variable).value_or("");
    const std::vector<std::string> all = frameworkVersions(directories.kit.directory, framework);
    // Versions before the second one are another framework.
    const auto found = std::ranges::find_if(all, [&](const std::string& version) {
        return asked.empty() ? model == DriverModel::Kmdf || version[0] == '2'
                             : versionFits(version, asked);
    });
    if (found == all.end()) {
        throw VeskException(fmt::format(
            "The kit '{}' has no {} {}. It has: {}. Correct {}, or install another WDK.",
            directories.kit.directory, framework, asked, all.empty() ? "none" : joined(all, ", "),
            variable));
    }
    return *found;
}

/// "1", "31" of "1.31".
std::pair<std::string, std::string> split(const std::string& version) {
    const std::size_t dot = version.find('.');
    return {version.substr(0, dot), dot == std::string::npos ? "0" : version.substr(dot + 1)};
}

}  // namespace

DriverModel driverModelOf(const Context& target) {
    const std::string asked = target.textOf("DRIVER").value_or("");
    if (asked.empty()) {
        return DriverModel::None;
    }
    std::vector<std::string> words;
    for (const auto& [word, model] : kModels) {
        if (equalsIgnoringCase(word, asked)) {
            return model;
        }
        words.emplace_back(word);
    }
    VeskException error(fmt::format("DRIVER '{}' is not one of {}.", asked, joined(words, ", ")));
    error.addNote(didYouMean(asked, words));
    throw error;
}

DriverSettings::DriverSettings(const Context& target, DriverModel model,
                               const MsvcDirectories& directories)
    : model_(model),
      directories_(directories),
      framework_(chooseFramework(target, model, directories)) {}

std::vector<std::string> DriverSettings::compilerOptions() const {
    std::vector<std::string> options;
    if (kernel()) {
        // Clang has no such option, so it gets the parts.
        options = directories_.clang ? std::vector<std::string>{"/GR-", "/EHs-c-"}
                                     : std::vector<std::string>{"/kernel"};
        options.emplace_back("/Zp8");
    }
    if (kernel() && directories_.architecture->directory == "x86") {
        options.emplace_back("/Gz");
    }
    return options;
}

std::vector<std::string> DriverSettings::definitions() const {
    std::vector<std::string> all;
    if (model_ == DriverModel::None) {
        return all;
    }
    const std::string_view machine = directories_.architecture->directory;
    if (machine == "x64") {
        all = {"_AMD64_", "AMD64"};
    } else if (machine == "x86") {
        all = {"_X86_=1", "i386=1", "STD_CALL"};
    } else {
        all = {"_ARM64_", "ARM64", "_USE_DECLSPECS_FOR_SAL=1", "STD_CALL"};
    }
    all.insert(all.end(), {"_WIN32_WINNT=0x0A00", "WINVER=0x0A00", "WINNT=1"});
    if (const char* framework = frameworkOf(model_)) {
        const auto [major, minor] = split(framework_);
        const char* name = framework[0] == 'k' ? "KMDF" : "UMDF";
        all.push_back(fmt::format("{}_VERSION_MAJOR={}", name, major));
        all.push_back(fmt::format("{}_VERSION_MINOR={}", name, minor));
    }
    return all;
}

std::vector<std::string> DriverSettings::linkerOptions(bool entry) const {
    if (!kernel()) {
        return {};
    }
    std::vector<std::string> options = {model_ == DriverModel::Wdm ? "/DRIVER:WDM" : "/DRIVER",
                                        "/SUBSYSTEM:NATIVE", "/NODEFAULTLIB"};
    if (!entry) {
        const bool decorated = directories_.architecture->directory == "x86";
        const std::string name = model_ == DriverModel::Kmdf ? "FxDriverEntry" : "GsDriverEntry";
        options.push_back("/ENTRY:" + name + (decorated ? "@8" : ""));
    }
    return options;
}

std::vector<std::string> DriverSettings::libraries() const {
    switch (model_) {
        case DriverModel::None:
            return {};
        case DriverModel::Umdf:
            return {"WdfDriverStubUm.lib", "ntdll.lib"};
        case DriverModel::Kmdf:
            return {"BufferOverflowFastFailK.lib", "ntoskrnl.lib", "hal.lib", "wmilib.lib",
                    "WdfDriverEntry.lib",          "WdfLdr.lib"};
        case DriverModel::Wdm:
            break;
    }
    return {"BufferOverflowFastFailK.lib", "ntoskrnl.lib", "hal.lib", "wmilib.lib"};
}

std::vector<std::string> DriverSettings::includeDirectories() const {
    const WindowsKit& kit = directories_.kit;
    if (kit.directory.empty()) {
        return {};
    }
    if (kernel()) {
        std::vector<std::string> directories = {kit.include("km"), kit.include("km/crt"),
                                                kit.include("shared")};
        if (!framework_.empty()) {
            directories.push_back(fmt::format("{}/Include/wdf/kmdf/{}", kit.directory, framework_));
        }
        return directories;
    }
    std::vector<std::string> directories;
    for (const char* part : {"ucrt", "um", "shared", "winrt", "cppwinrt"}) {
        directories.push_back(kit.include(part));
    }
    if (model_ == DriverModel::Umdf) {
        directories.push_back(fmt::format("{}/Include/wdf/umdf/{}", kit.directory, framework_));
    }
    return directories;
}

std::vector<std::string> DriverSettings::libraryDirectories() const {
    const WindowsKit& kit = directories_.kit;
    if (kit.directory.empty()) {
        return {};
    }
    std::vector<std::string> directories;
    for (const char* part : {"ucrt", "um"}) {
        if (!kernel()) {
            directories.push_back(kit.library(part, *directories_.architecture));
        }
    }
    if (kernel()) {
        directories.push_back(kit.library("km", *directories_.architecture));
    }
    if (!framework_.empty()) {
        directories.push_back(fmt::format("{}/Lib/wdf/{}/{}/{}", kit.directory, frameworkOf(model_),
                                          directories_.architecture->directory, framework_));
    }
    return directories;
}

}  // namespace Vesk
