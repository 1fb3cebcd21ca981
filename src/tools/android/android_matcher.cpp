#include "tools/android/android_matcher.h"

#include <algorithm>

#include "tools/android/apk_builder.h"
#include "tools/android/apk_variables.h"
#include "tools/discovery/toolchain_match.h"
#include "tools/support/source_files.h"
#include "tools/support/value_lists.h"

namespace Vesk {

namespace {

constexpr const char* kToolType = "android-sdk";
constexpr const char* kBuildToolsVersion = "build_tools_version";
constexpr const char* kPlatformVersion = "platform_version";

constexpr std::string_view kSources[] = {"MANIFEST"};
constexpr Misnomer kMisnomers[] = {
    {"RESOURCES", "RES_DIRS"},      {"RES_DIR", "RES_DIRS"},
    {"ASSETS", "ASSET_DIRS"},       {"MIN_SDK_VERSION", "MIN_SDK"},
    {"CLASSPATH", "CLASS_PATH"},    {"TARGET_SDK_VERSION", "TARGET_SDK"},
    {"JAVA_SOURCES", "JAVA_FILES"}, {"JAVACFLAGS", "JAVA_FLAGS"},
};

const AssignmentMap& wantsTable() {
    static const AssignmentMap table =
        makeTable({{"toolchain_path"}, {kBuildToolsVersion}, {kPlatformVersion}, {"java_path"}});
    return table;
}

const AssignmentMap& needsTable() {
    static const AssignmentMap table = makeTable({{"MANIFEST"}});
    return table;
}

bool isForCompilers(const Context& target) {
    return hasSources(target) || hasEntries(target, "OBJ_FILES");
}

bool isGiven(const Assignment* assignment) {
    return assignment != nullptr && assignment->value;
}

}  // namespace

const ToolTypeRegistration RegisterAndroidSdkMatcher({
    .word = kToolType,
    .factory = matcherFactory<AndroidSdkMatcher>(),
    .sources = kSources,
    .misnomers = kMisnomers,
    .variables = kApkVariables,
    .detect = detectAndroidSdks,
    .rank = 5,
});

AndroidSdkMatcher::AndroidSdkMatcher(const CiString& name, const AssignmentMap& must,
                                     const AssignmentMap& others)
    : Matcher(name, kToolType, wantsTable(), needsTable(), must, others),
      sdks_(std::make_shared<AndroidSdks>()) {
    requireToolchainPath(*this, "AndroidSdkMatcher");
}

std::unique_ptr<Matcher> AndroidSdkMatcher::clone() const {
    return std::make_unique<AndroidSdkMatcher>(*this);
}

std::vector<CiString> AndroidSdkMatcher::comparedNames() const {
    std::vector<CiString> names = Matcher::comparedNames();
    names.insert(names.end(), {kBuildToolsVersion, kPlatformVersion, "tool_type"});
    return names;
}

// A profile may well ask for a compiler's version or target. Only the type of tool and the versions
// of an SDK's parts refer to this tool. If one SDK lacks the version, another may have it.
MatchResult AndroidSdkMatcher::matchTool(const Context& target) const {
    MatchResult result;
    if (spellsOutCommands(target) || isForCompilers(target)) {
        return result;
    }
    for (const auto& [name, subject] : androidApkSubjects()) {
        const Assignment* assignment = target.find(name);
        if (assignment != nullptr && assignment->modifier != AssignModifier::Output) {
            result.matches.emplace(name, MatchKind::ExactMatch);
        }
    }
    if (equalsIgnoringCase(target.textOf("tool_type").value_or(""), kToolType)) {
        result.matches.emplace("tool_type", MatchKind::ExactMatch);
    }
    const auto note = [&](const char* name, const auto& find) {
        const Assignment* asked = target.find(name);
        if (isGiven(asked) && find(asked->value->toString()) != nullptr) {
            result.matches.emplace(name, MatchKind::ExactMatch);
        }
    };
    if (isGiven(target.find(kBuildToolsVersion)) || isGiven(target.find(kPlatformVersion))) {
        auto scratch = std::make_shared<Context>();
        if (const Assignment* root = target.find("PROJECT_ROOT")) {
            scratch->addAssignment(*root, ModifierMode::Copy);
        }
        const AndroidSdk& sdk =
            sdks_->at(sdkDirectory(wants().at("toolchain_path").value, *scratch));
        note(kBuildToolsVersion, [&](const std::string& v) { return sdk.findBuildTools(v); });
        note(kPlatformVersion, [&](const std::string& v) { return sdk.findPlatform(v); });
    }
    result.note = MatchNote::BuildPossible;
    return result;
}

std::shared_ptr<Builder> AndroidSdkMatcher::createBuilder(const Context&) const {
    return std::make_shared<AndroidApkBuilder>(wants().at("toolchain_path").value, sdks_);
}

}  // namespace Vesk
