#include "tools/android/android_sdk.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <functional>
#include <system_error>
#include <utility>

#include "base/exception.h"
#include "base/text.h"
#include "platform/directories.h"
#include "platform/files.h"
#include "platform/system.h"
#include "tools/discovery/toolchain_programs.h"
#include "tools/discovery/version.h"
#include "tools/support/target_paths.h"

namespace Vesk {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPlatformPrefix = "android-";

using IsWhole = std::function<bool(const SdkPart&)>;

std::vector<SdkPart> partsIn(const std::string& directory, std::string_view prefix,
                             const IsWhole& isWhole) {
    std::vector<SdkPart> parts;
    std::error_code ignored;
    for (const platform::DirectoryEntry& entry :
         platform::listDirectory(platform::pathFromUtf8(directory), ignored)) {
        if (!entry.name.starts_with(prefix)) {
            continue;
        }
        SdkPart part{entry.name.substr(prefix.size()), directory + "/" + entry.name};
        if (isWhole(part)) {
            parts.push_back(std::move(part));
        }
    }
    std::ranges::sort(parts, [](const SdkPart& a, const SdkPart& b) {
        return isNewerSdkVersion(a.version, b.version);
    });
    return parts;
}

bool isWholeBuildTools(const SdkPart& part) {
    return isFile(buildToolPath(part, "aapt2")) &&
           (!buildToolJar(part, "apksigner").empty() || isFile(buildToolScript(part, "apksigner")));
}

bool isWholePlatform(const SdkPart& part) {
    return isFile(platformJar(part));
}

const SdkPart* find(const std::vector<SdkPart>& parts, std::string_view asked) {
    const bool isNumber = leadingVersion(asked).size() == asked.size();
    auto found = std::ranges::find(parts, asked, &SdkPart::version);
    if (found == parts.end() && isNumber) {
        found = std::ranges::find_if(
            parts, [asked](const SdkPart& part) { return versionFits(part.version, asked); });
    }
    return found == parts.end() ? nullptr : &*found;
}

struct PartKind {
    const char* name;
    const char* fitting;
    const char* pronoun;
    const char* variable;
    const char* directory;
    const char* example;
};

constexpr PartKind kBuildToolsKind = {"build tools",         "that fit",    "them",
                                      "build_tools_version", "build-tools", "build-tools;34.0.0"};
constexpr PartKind kPlatformKind = {"platform",         "that fits", "one",
                                    "platform_version", "platforms", "platforms;android-34"};

[[noreturn]] void throwMissing(const PartKind& kind, const std::string& root,
                               std::string_view asked, const std::vector<SdkPart>& parts) {
    if (parts.empty()) {
        throw VeskException(
            fmt::format("The Android SDK in '{}' has no usable {} in its directory '{}'. Install "
                        "{}, for example "
                        "with sdkmanager \"{}\", or correct toolchain_path of the tool.",
                        root, kind.name, kind.directory, kind.pronoun, kind.example));
    }
    std::vector<std::string> versions;
    for (const SdkPart& part : parts) {
        versions.push_back(part.version);
    }
    throw VeskException(fmt::format(
        "The Android SDK in '{}' has no {} {} {} '{}'. Installed: {}. Choose one of them, or "
        "install what is asked for.",
        root, kind.name, kind.fitting, kind.variable, asked, joined(versions, ", ")));
}

}  // namespace

bool isNewerSdkVersion(std::string_view a, std::string_view b) noexcept {
    const auto numberOf = [](std::string_view text) {
        return text.substr(0, std::min(text.find_first_not_of("0123456789."), text.size()));
    };
    const std::string_view numberA = numberOf(a);
    const std::string_view numberB = numberOf(b);
    if (numberA.empty() || numberB.empty()) {
        return numberA.empty() == numberB.empty() ? a > b : !numberA.empty();
    }
    if (const auto order = compareVersions(numberA, numberB); order != 0) {
        return order > 0;
    }
    const std::string_view restA = a.substr(numberA.size());
    const std::string_view restB = b.substr(numberB.size());
    if (restA.empty() || restB.empty()) {
        return restA.empty() && !restB.empty();
    }
    // Names of equal length compare like their numbers: ext9 is older than ext10.
    return restA.size() != restB.size() ? restA.size() > restB.size() : restA > restB;
}

AndroidSdk::AndroidSdk(std::string root)
    : root_(std::move(root)),
      buildTools_(partsIn(root_ + "/build-tools", {}, isWholeBuildTools)),
      platforms_(partsIn(root_ + "/platforms", kPlatformPrefix, isWholePlatform)) {}

const SdkPart* AndroidSdk::findBuildTools(std::string_view asked) const {
    return find(buildTools_, asked);
}

const SdkPart* AndroidSdk::findPlatform(std::string_view asked) const {
    if (asked.starts_with(kPlatformPrefix)) {
        asked.remove_prefix(kPlatformPrefix.size());
    }
    return find(platforms_, asked);
}

const SdkPart& AndroidSdk::requireBuildTools(std::string_view asked) const {
    const SdkPart* part = findBuildTools(asked);
    if (part == nullptr) {
        throwMissing(kBuildToolsKind, root_, asked, buildTools_);
    }
    return *part;
}

const SdkPart& AndroidSdk::requirePlatform(std::string_view asked) const {
    const SdkPart* part = findPlatform(asked);
    if (part == nullptr) {
        throwMissing(kPlatformKind, root_, asked, platforms_);
    }
    return *part;
}

const AndroidSdk& AndroidSdks::at(const std::string& root) {
    return known_.get(root, [&] { return AndroidSdk(root); });
}

std::string buildToolPath(const SdkPart& tools, std::string_view name) {
    return fmt::format("{}/{}{}", tools.directory, name, programSuffix());
}

// Distributions put the archives beside the programs.
std::string buildToolJar(const SdkPart& tools, std::string_view name) {
    for (const char* directory : {"/lib/", "/"}) {
        if (std::string path = fmt::format("{}{}{}.jar", tools.directory, directory, name);
            isFile(path)) {
            return path;
        }
    }
    return {};
}

std::string buildToolScript(const SdkPart& tools, std::string_view name) {
    return fmt::format("{}/{}{}", tools.directory, name, platform::kWindows ? ".bat" : "");
}

std::string platformJar(const SdkPart& platform) {
    return platform.directory + "/android.jar";
}

}  // namespace Vesk
