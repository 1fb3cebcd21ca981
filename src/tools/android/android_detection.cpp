// Finds installed Android SDKs.

#include <set>

#include "base/console.h"
#include "platform/system.h"
#include "tools/android/android_matcher.h"
#include "tools/discovery/compiler_search.h"
#include "tools/support/target_paths.h"

namespace Vesk {

namespace {

std::vector<std::string> usualPlaces() {
    std::vector<std::string> directories;
    addBelow(directories, "ANDROID_HOME", "");
    addBelow(directories, "ANDROID_SDK_ROOT", "");
    if (platform::kWindows) {
        addBelow(directories, "LOCALAPPDATA", "/Android/Sdk");
        addBelow(directories, "ProgramFiles(x86)", "/Android/android-sdk");
    } else {
        addBelow(directories, "HOME", "/Android/Sdk");
        addBelow(directories, "HOME", "/Library/Android/sdk");
        directories.emplace_back("/usr/lib/android-sdk");
        directories.emplace_back("/opt/android-sdk");
    }
    return directories;
}

/// The first one is the user's own, wherever it is; the others are named by their place.
DetectedTool detectedSdk(const AndroidSdk& sdk, bool isFirst) {
    auto context = std::make_shared<Context>();
    const auto add = [&context](const char* name, const std::string& text) {
        context->addAssignment(textAssignment(name, text), ModifierMode::Copy);
    };
    add("tool_type", RegisterAndroidSdkMatcher.word());
    add("toolchain_name", "Android SDK");
    context->addAssignment(resolvedAssignment("toolchain_path", pathValue(sdk.root())),
                           ModifierMode::Copy);
    const std::string name = RegisterAndroidSdkMatcher.word();
    return {isFirst ? name : name + identifierOf(sdk.root()), context};
}

/// At the detail level: who builds no packages need not know what they would require.
void reportParts(const AndroidSdk& sdk) {
    const std::string platform = sdk.platforms().empty() ? "none" : sdk.platforms().front().version;
    console::message(console::level::kDetail, console::colour::kReport,
                     "Android SDK in '{}': build tools {}, platform {}.", sdk.root(),
                     sdk.buildTools().front().version, platform);
}

}  // namespace

std::vector<DetectedTool> detectAndroidSdks() {
    std::vector<DetectedTool> tools;
    std::set<std::string> seen;
    for (const std::string& directory : usualPlaces()) {
        if (!seen.insert(realPath(directory)).second) {
            continue;
        }
        const AndroidSdk sdk(directory);
        if (sdk.buildTools().empty()) {
            console::message(console::level::kDetail, console::colour::kReport,
                             "There is no Android SDK with build tools in '{}'.", directory);
            continue;
        }
        reportParts(sdk);
        tools.push_back(detectedSdk(sdk, tools.empty()));
    }
    return tools;
}

}  // namespace Vesk
