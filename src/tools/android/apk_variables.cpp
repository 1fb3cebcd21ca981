#include "tools/android/apk_variables.h"

namespace Vesk {

namespace {

constexpr Variable kContents[] = {
    {"MANIFEST", "file", "required", "makes the target a package, unless it names C or C++ sources",
     R"("AndroidManifest.xml")"},
    {"RES_DIRS", "list of directories", "",
     "resources; those of a later directory go over those of an earlier one",
     R"(["res", "res-free"])"},
    {"ASSET_DIRS", "list of directories", "", "assets", R"(["assets"])"},
    {"NATIVE_LIBS", "list of files", "",
     "shared libraries; each goes to the directory of the machine that it is made for. Or a "
     "context: "
     "a list for each ABI, which the libraries have to be for",
     R"([arm.OUTPUT, "libs/*/*.so"])"},
    {"LIB_FILES", "list of files", "", "shared libraries that dependencies hand on with `+`",
     "[native.OUTPUT]"},
    {"ABI", "list", "all", "the ABIs that the package may hold; a library for another is an error",
     R"(["arm64-v8a", "x86_64"])"},
    {"JAVA_FILES", "list of files", "",
     "Java sources, compiled together with the generated `R.java`", R"(["src/**/*.java"])"},
    {"JAVA_FLAGS", "flags", "`--release 8 -Xlint:-options`", "of `javac`", R"("--release 11")"},
    {"CLASS_PATH", "list of files", "",
     "archives that Java sources are compiled against, besides the platform",
     R"(["libs/ads.jar"])"},
    {"CLASS_FILES", "list of files, directories", "",
     "`.class` files and `.jar` archives; a directory stands for all classes in it",
     R"x(["libs/ads.jar", P"(classes)"])x"},
    {"D8_FLAGS", "flags", "`--release`", "of `d8`, which makes DEX files of the classes",
     R"("--debug")"},
    {"DEX_FILES", "list of files", "", "ready DEX files, numbered behind those of classes",
     R"(["classes.dex"])"},
    {"EXTRA_FILES", "list of files, directories", "",
     "into the package's root; a directory's files keep their names from there. Hidden files are "
     "left out",
     R"x([P"(java-resources)"])x"},
    {"PACKAGE_NAME", "string", "the manifest's", "`--rename-manifest-package`",
     R"("org.example.free")"},
    {"VERSION_CODE", "integer", "the manifest's", "takes the place of what the manifest says", "7"},
    {"VERSION_NAME", "string", "the manifest's", "takes the place of what the manifest says",
     R"("1.2")"},
    {"MIN_SDK", "integer", "the manifest's", "where the manifest says nothing", "21"},
    {"TARGET_SDK", "integer", "the platform's", "where the manifest says nothing", "34"},
    {"AAPT2_COMPILE_FLAGS", "flags", "", "of `aapt2 compile`", R"("--no-crunch")"},
    {"AAPT2_FLAGS", "flags", "", "of `aapt2 link`", R"("--auto-add-overlay")"},
    {"ANDROID_JAR", "path", "the platform's", "another archive to link against",
     R"x(P"(android.jar)")x"},
    {"OUTPUT_NAME", "string", "the target's name", "`.apk` is added to a name without a suffix",
     R"("demo")"},
};

constexpr Variable kSigning[] = {
    {"KEYSTORE", "path", "the debug key", "the file with the key", R"x(P"(release.keystore)")x"},
    {"KEY_ALIAS", "string", "the only key", "the key's name", R"("release")"},
    {"KEYSTORE_PASS", "string", "required with `KEYSTORE`",
     "where the password is: `env:NAME` an environment variable, `file:PATH` the first line of a "
     "file",
     R"("env:RELEASE_PASS")"},
    {"KEY_PASS", "string", "that of the store", "the same for the key", R"("file:key.pass")"},
    {"SIGN_FLAGS", "flags", "", "of `apksigner sign`", R"("--v1-signing-enabled false")"},
};

constexpr Variable kOutputs[] = {
    {"APK", "path", "", "the package"},
    {"OUTPUT", "path", "", "the package"},
    {"R_JAVA_DIR", "path", "", "the directory with the generated `R.java`"},
    {"result", "integer", "", "0"},
};

constexpr Variable kParts[] = {
    {"build_tools_version", "string", "newest",
     "the build tools: `34` is the newest of 34, `34.0.0` that one", R"("34.0.0")"},
    {"platform_version", "string, integer", "newest", "the platform", R"("34-ext8")"},
    {"java_path", "path", "`JAVA_HOME`, then `PATH`", "the Java development kit",
     R"x(P"(/opt/jdk-17)")x"},
};

constexpr Variable kSettings[] = {
    {"tool_type", "string", "required", "`android-sdk`", R"("android-sdk")"},
    {"toolchain_path", "path", "required", "the SDK's directory", R"x(P"(/opt/android-sdk)")x"},
    {"toolchain_name", "string", "", "for people", R"("Android SDK")"},
};

constexpr VariableGroup kContentGroup = {"Android packages", VariableRole::Input, kContents};
constexpr VariableGroup kSigningGroup = {"Android packages: signing", VariableRole::Input,
                                         kSigning};
constexpr VariableGroup kOutputGroup = {"Android packages: outputs", VariableRole::Output,
                                        kOutputs};
constexpr VariableGroup kPartGroup = {"Android packages: versions", VariableRole::Input, kParts};
constexpr VariableGroup kSettingGroup = {"Android packages: SDKs", VariableRole::Setting,
                                         kSettings};
constexpr const VariableGroup* kAll[] = {&kContentGroup, &kSigningGroup, &kOutputGroup, &kPartGroup,
                                         &kSettingGroup};

}  // namespace

constinit const VariableGroups kApkVariables = kAll;

const AssignmentMap& androidApkSubjects() {
    static const AssignmentMap table = [] {
        AssignmentMap all = tableOf({&kContentGroup, &kSigningGroup});
        all.merge(makeTable({{"OUTPUT_DIR"}}));
        return all;
    }();
    return table;
}

const AssignmentMap& androidToolSettings() {
    static const AssignmentMap table = tableOf({&kPartGroup});
    return table;
}

}  // namespace Vesk
