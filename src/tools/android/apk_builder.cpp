#include "tools/android/apk_builder.h"

#include <fmt/format.h>
#include <utility>

#include "base/exception.h"
#include "platform/system.h"
#include "tools/android/apk_recipes.h"
#include "tools/android/apk_variables.h"
#include "tools/discovery/toolchain_programs.h"
#include "tools/support/c_builder.h"
#include "types/values/simple_values.h"

namespace Vesk {

namespace {

/// A setting that is a path, made absolute; empty if it is not given.
std::string pathSetting(const TargetContext& target, const char* name, const TargetPaths& paths) {
    const std::string path = target.textOf(name).value_or("");
    return path.empty() ? path : paths.absolute(path);
}

/// The number in "34" or "34-ext8", as used in manifests. Empty for a platform without a number.
std::string apiLevel(const std::string& version) {
    return version.substr(0, version.find_first_not_of("0123456789"));
}

ApkTools toolsFor(const TargetContext& target, const TargetPaths& paths, const AndroidSdk& sdk) {
    const auto text = [&target](const char* name) { return target.textOf(name).value_or(""); };
    ApkTools tools;
    tools.buildTools = sdk.requireBuildTools(text("build_tools_version"));
    tools.stagesFiles = platform::kWindows;
    tools.javaPath = pathSetting(target, "java_path", paths);
    tools.platformJar = pathSetting(target, "ANDROID_JAR", paths);
    if (tools.platformJar.empty()) {
        const SdkPart& platform = sdk.requirePlatform(text("platform_version"));
        tools.platformJar = platformJar(platform);
        tools.platformVersion = apiLevel(platform.version);
    }
    return tools;
}

}  // namespace

std::string sdkDirectory(const ValuePtr& declared, Context& target) {
    return normalPath(resolvedText(declared, target),
                      normalPath(target.textOf("PROJECT_ROOT").value_or("")));
}

AndroidApkBuilder::AndroidApkBuilder(ValuePtr sdkPath, std::shared_ptr<AndroidSdks> sdks)
    : Builder(androidApkSubjects(), androidToolSettings()),
      sdkPath_(std::move(sdkPath)),
      sdks_(std::move(sdks)) {}

RecipeSet AndroidApkBuilder::createRecipes(TargetContext& target) {
    const BuildEnv environment(environmentSettings(target));
    const TargetPaths paths(target, environment);
    ApkRecipes made(target, environment,
                    toolsFor(target, paths, sdks_->at(sdkDirectory(sdkPath_, target))));
    made.make();
    RecipeSet set{std::move(made.recipes), std::move(made.outputs), true};
    addDeclaredOutputs(target, set.assignments);
    return set;
}

std::shared_ptr<Context> AndroidApkBuilder::complete(TargetContext&, int exitCode) {
    auto results = std::make_shared<Context>();
    results->addAssignment(
        resolvedAssignment("result", std::make_shared<VeskInt>(exitCode), AssignModifier::Output),
        ModifierMode::Copy);
    return results;
}

}  // namespace Vesk
