// The recipes that make an Android package, stage by stage:
//
//     resource files -> compiled resources -> one archive a directory -> package with manifest and
//     assets, R.java -> Java classes -> DEX -> whole package -> signed package
//
// A step runs again if something that it reads has changed. An edited picture is compiled with the
// few files of its batch; an edited library is only packed and signed.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "run/build_env.h"
#include "tools/android/android_sdk.h"
#include "tools/android/apk_package.h"
#include "tools/android/signing_key.h"
#include "tools/support/command_text.h"
#include "tools/support/recipe_parts.h"
#include "tools/support/target_paths.h"

namespace Vesk {

/// The tools and settings for making packages.
struct ApkTools {
    SdkPart buildTools;
    std::string platformJar;      ///< android.jar
    std::string platformVersion;  ///< empty if only the archive is known
    std::string javaPath;         ///< the setting java_path
    bool stagesFiles = false;     ///< PowerShell copies what is packed to one place first
};

class ApkRecipes {
  public:
    /// Everything passed by reference must outlive the object.
    ApkRecipes(const TargetContext& target, const BuildEnv& environment, ApkTools tools);

    /// Throws VeskException for a target that cannot be built as written.
    void make();

    std::vector<Recipe> recipes;
    std::vector<Assignment> outputs;

  private:
    // The stages, which run one after another.
    enum Stage : std::uint32_t { Compile, Bundle, Link, Java, Dex, Empty, Copy, Pack, Sign };

    void compileResources();
    void compileDirectory(const std::string& directory);
    Recipe batchRecipe(const std::vector<std::string>& batch,
                       const std::string& compiledDirectory) const;
    void bundle(const std::string& archive, std::vector<std::string> compiled);

    void link();
    void addManifestOptions(CommandText& command) const;
    void addAssets(CommandText& command, Recipe& recipe) const;

    void compileJava();
    void compileClasses();
    std::vector<std::string> classFiles() const;

    void pack();
    PackageContents packageContents() const;
    void stageFiles(PackageContents& contents);
    std::vector<NativeLibrary> nativeLibraries() const;
    std::vector<ExtraFile> extraFiles() const;

    void makeDebugKey(const SigningKey& key);
    void sign();
    std::string productPath() const;

    Recipe newRecipe(Stage stage) const;
    std::string inObjects(std::string_view name) const;
    std::vector<std::string> filesBelow(const std::string& directory, const char* pattern,
                                        const char* variable) const;
    std::string text(const char* variable) const;

    /// The beginning of the command that runs a Java program of the build tools.
    CommandText javaTool(Recipe& recipe, std::string_view name, const char* mainClass) const;

    const TargetContext& target_;
    TargetPaths paths_;
    ApkTools tools_;
    std::vector<std::string> resources_;  ///< an archive for each directory of resources
    std::string manifest_;
    std::string base_;           ///< the output of the resource linker
    std::string symbols_;        ///< the symbols of R.java
    std::string javaDirectory_;  ///< where R.java is
    std::string javaClasses_;
    std::string dexArchive_;
    std::string unsigned_;
    std::string product_;
};

}  // namespace Vesk
