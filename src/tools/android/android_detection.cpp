// Which Android SDKs are installed.

#include <set>

#include "base/console.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/system.h"
#include "tools/android/android_matcher.h"
#include "tools/discovery/compiler_search.h"
#include "tools/support/target_paths.h"

namespace Vesk {

namespace {

void addBelow(std::vector<std::string>& folders, const char* variable, const char* below) {
    const auto folder = platform::environmentVariable(variable);
    if (folder && platform::isAbsolutePath(*folder)) {
        folders.push_back(normalPath(*folder + below));
    }
}

std::vector<std::string> usualPlaces() {
    std::vector<std::string> folders;
    addBelow(folders, "ANDROID_HOME", "");
    addBelow(folders, "ANDROID_SDK_ROOT", "");
    if (platform::kWindows) {
        addBelow(folders, "LOCALAPPDATA", "/Android/Sdk");
        addBelow(folders, "ProgramFiles(x86)", "/Android/android-sdk");
    } else {
        addBelow(folders, "HOME", "/Android/Sdk");
        addBelow(folders, "HOME", "/Library/Android/sdk");
        folders.emplace_back("/usr/lib/android-sdk");
        folders.emplace_back("/opt/android-sdk");
    }
    return folders;
}

/// The first one is the user's own, whatever its place; the others go by theirs.
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

/// At the detail level: who builds no packages is not told what they would need.
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
    for (const std::string& folder : usualPlaces()) {
        if (!seen.insert(realPath(folder)).second) {
            continue;
        }
        const AndroidSdk sdk(folder);
        if (sdk.buildTools().empty()) {
            console::message(console::level::kDetail, console::colour::kReport,
                             "There is no Android SDK with build tools in '{}'.", folder);
            continue;
        }
        reportParts(sdk);
        tools.push_back(detectedSdk(sdk, tools.empty()));
    }
    return tools;
}

}  // namespace Vesk
