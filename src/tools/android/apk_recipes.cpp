// What all steps share, packing and signing.

#include "tools/android/apk_recipes.h"

#include <algorithm>
#include <fmt/format.h>
#include <utility>

#include "base/console.h"
#include "base/exception.h"
#include "base/text.h"
#include "platform/files.h"
#include "tools/android/java_programs.h"
#include "tools/discovery/toolchain_programs.h"
#include "tools/support/file_patterns.h"
#include "tools/support/libraries.h"
#include "tools/support/output_type.h"
#include "tools/support/powershell_staging.h"
#include "tools/support/run_step.h"
#include "tools/support/value_lists.h"
#include "types/context/context_value.h"

namespace Vesk {

ApkRecipes::ApkRecipes(const TargetContext& target, const BuildEnv& environment, ApkTools tools)
    : target_(target),
      paths_(target, environment),
      tools_(std::move(tools)),
      base_(inObjects("base.apk")),
      symbols_(inObjects("R.txt")),
      javaDirectory_(inObjects("java")),
      unsigned_(inObjects("unsigned.apk")) {}

void ApkRecipes::make() {
    const std::vector<std::string> manifests = paths_.files("MANIFEST");
    if (manifests.size() != 1) {
        throw VeskException(
            fmt::format("MANIFEST must name one file; it names {}.", manifests.size()));
    }
    manifest_ = manifests.front();
    product_ = productPath();
    compileResources();
    link();
    compileJava();
    compileClasses();
    pack();
    sign();

    const auto output = [this](const char* name, const std::string& path) {
        outputs.push_back(resolvedAssignment(name, pathValue(path), AssignModifier::Output));
    };
    output("APK", product_);
    output("OUTPUT", product_);
    output("R_JAVA_DIR", javaDirectory_);
}

std::string ApkRecipes::productPath() const {
    std::string name = text("OUTPUT_NAME");
    if (name.empty()) {
        name = target_.target().name;
    }
    return paths_.inOutputDirectory(hasSuffix(name) ? name : name + ".apk");
}

Recipe ApkRecipes::newRecipe(Stage stage) const {
    Recipe recipe;
    recipe.stage = stage;
    recipe.workingDirectory = platform::pathFromUtf8(paths_.root());
    return recipe;
}

std::string ApkRecipes::inObjects(std::string_view name) const {
    return paths_.objectDirectory() + "/" + std::string(name);
}

std::string ApkRecipes::text(const char* variable) const {
    return target_.textOf(variable).value_or("");
}

std::vector<std::string> ApkRecipes::filesBelow(const std::string& directory, const char* pattern,
                                                const char* variable) const {
    const auto status = platform::fileStatus(platform::pathFromUtf8(directory));
    if (!status || !status->directory) {
        throw VeskException(
            fmt::format("There is no directory '{}', which {} names.", directory, variable));
    }
    return filesMatching(directory + "/" + pattern, paths_.outputDirectory());
}

CommandText ApkRecipes::javaTool(Recipe& recipe, std::string_view name,
                                 const char* mainClass) const {
    CommandText command;
    const std::string jar = buildToolJar(tools_.buildTools, name);
    if (jar.empty()) {
        const std::string script = buildToolScript(tools_.buildTools, name);
        if (!isFile(script)) {
            throw VeskException(fmt::format(
                "The build tools in '{}' have no '{}', which this target needs. Choose a version "
                "that has it with build_tools_version.",
                tools_.buildTools.directory, name));
        }
        command.add(nativePath(script));
        addInput(recipe, "program", script);
        return command;
    }
    // Not by the script beside it, which may succeed even if it found no Java.
    command.add(nativePath(requireJavaProgram("java", tools_.javaPath)));
    command.add(mainClass == nullptr ? "-jar" : "-cp");
    command.add(nativePath(jar));
    if (mainClass != nullptr) {
        command.add(mainClass);
    }
    addInput(recipe, "program", jar);
    return command;
}

PackageContents ApkRecipes::packageContents() const {
    PackageContents contents;
    contents.base = base_;
    contents.dexArchive = dexArchive_;
    contents.dexFiles = paths_.files("DEX_FILES");
    contents.libraries = nativeLibraries();
    contents.abis = entriesOf(target_, "ABI");
    contents.extraFiles = extraFiles();
    return contents;
}

/// Copies files from elsewhere into a directory of this target. If other files belong there than
/// before, the directory is emptied and all are copied; otherwise only those that have changed.
void ApkRecipes::stageFiles(PackageContents& contents) {
    const std::string directory = inObjects("stage");
    std::vector<StagedFile> files;
    std::string names;
    const auto take = [&](const std::string& path) {
        const std::string name =
            fmt::format("{}/{}", contents.staged.size(), path.substr(path.rfind('/') + 1));
        if (contents.staged.try_emplace(path, directory + "/" + name).second) {
            files.push_back({platform::pathFromUtf8(nativePath(path)),
                             platform::pathFromUtf8(nativePath(name))});
            names.append(name).append(1, '\n');
        }
    };
    std::ranges::for_each(contents.dexFiles, take);
    std::ranges::for_each(contents.libraries, take, &NativeLibrary::path);
    std::ranges::for_each(contents.extraFiles, take, &ExtraFile::path);
    if (files.empty()) {
        return;
    }
    std::vector<Recipe> staging =
        stagingRecipes(platform::pathFromUtf8(nativePath(directory)), files, Empty);
    for (std::size_t i = 0; i < staging.size(); ++i) {
        Recipe& recipe = staging[i];
        recipe.workingDirectory = platform::pathFromUtf8(paths_.root());
        recipe.declaration = Declaration::Complete;
        if (i == 0) {
            recipe.inputs.push_back({textAssignment("staged", names), std::nullopt});
            recipe.outputDirectory = platform::pathFromUtf8(directory);
            addOutput(recipe, "stage", directory);
        } else {
            const std::string source = normalPath(platform::pathToUtf8(files[i - 1].source));
            recipe.start = Start::Queued;
            addInput(recipe, "source", source);
            addOutput(recipe, "staged", contents.staged.at(source));
        }
        recipes.push_back(std::move(recipe));
    }
}

/// Runs in vesk's process, since no program that is always available adds files to an archive and
/// keeps them uncompressed. This also controls the alignment of data, whatever the version of the
/// build tools.
void ApkRecipes::pack() {
    PackageContents contents = packageContents();
    if (tools_.stagesFiles) {
        stageFiles(contents);
    }
    Recipe recipe = newRecipe(Pack);
    addInput(recipe, "base", contents.base);
    if (!dexArchive_.empty()) {
        addInput(recipe, "dex", dexArchive_);
    }
    std::vector<std::string> names;
    for (const std::string& file : contents.dexFiles) {
        addInput(recipe, "DEX_FILES", contents.packedFile(file));
        names.push_back(paths_.inCommand(file));
    }
    for (const NativeLibrary& library : contents.libraries) {
        addInput(recipe, "NATIVE_LIBS", contents.packedFile(library.path));
        names.push_back(paths_.inCommand(library.path) +
                        (library.abi.empty() ? "" : " for " + library.abi));
    }
    for (const ExtraFile& file : contents.extraFiles) {
        addInput(recipe, "EXTRA_FILES", contents.packedFile(file.path));
        names.push_back(paths_.inCommand(file.path) + " as " + file.name);
    }
    addOutput(recipe, "unsigned", unsigned_);
    recipe.declaration = Declaration::Complete;
    recipe.command = fmt::format("Packing {}", paths_.inCommand(unsigned_));
    if (!names.empty()) {
        recipe.command += " with " + joined(names, ", ");
    }
    if (!contents.abis.empty()) {
        recipe.command += " (" + joined(contents.abis, ", ") + ")";
    }
    recipe.action = [contents = std::move(contents), package = unsigned_, shown = recipe.command] {
        console::normal("{}", shown);
        writePackage(contents, platform::pathFromUtf8(package));
    };
    recipes.push_back(std::move(recipe));
}

/// The libraries that the target names, and the shared ones passed on by its dependencies.
std::vector<NativeLibrary> ApkRecipes::nativeLibraries() const {
    std::vector<NativeLibrary> libraries;
    const Assignment* assignment = target_.find("NATIVE_LIBS");
    const auto* byAbi =
        assignment == nullptr ? nullptr : valueAs<VeskContext>(assignment->value.get());
    if (byAbi != nullptr) {
        for (const auto& [abi, files] : byAbi->context()->assignments()) {
            for (std::string& path :
                 paths_.absolute(entriesOf(*byAbi->context(), files.name.str()))) {
                libraries.push_back({std::move(path), abi.str()});
            }
        }
    } else {
        for (std::string& path : paths_.files("NATIVE_LIBS")) {
            libraries.push_back({std::move(path), {}});
        }
    }
    for (std::string& path : paths_.files("LIB_FILES")) {
        const bool named =
            std::ranges::find(libraries, path, &NativeLibrary::path) != libraries.end();
        if (isSharedLibrary(path) && !named) {
            libraries.push_back({std::move(path), {}});
        }
    }
    return libraries;
}

/// A directory stands for all files in it, whose names start from there.
std::vector<ExtraFile> ApkRecipes::extraFiles() const {
    std::vector<ExtraFile> files;
    for (const std::string& path : paths_.files("EXTRA_FILES")) {
        const auto status = platform::fileStatus(platform::pathFromUtf8(path));
        if (!status || !status->directory) {
            files.push_back({path.substr(path.rfind('/') + 1), path});
            continue;
        }
        for (const std::string& file : filesBelow(path, "**/*", "EXTRA_FILES")) {
            files.push_back({file.substr(path.size() + 1), file});
        }
    }
    return files;
}

void ApkRecipes::makeDebugKey(const SigningKey& key) {
    const CommandText command = debugKeyCommand(requireJavaProgram("keytool", tools_.javaPath));
    Recipe recipe = newRecipe(Compile);
    recipe.command = command.text();
    addOutput(recipe, "KEYSTORE", key.keystore);
    recipe.declaration = Declaration::Complete;
    recipe.action = [keystore = key.keystore, command] { Vesk::makeDebugKey(keystore, command); };
    recipes.push_back(std::move(recipe));
}

void ApkRecipes::sign() {
    SigningKey key = signingKeyOf(target_, paths_);
    if (key.isDebugKey) {
        makeDebugKey(key);
    }
    const auto inCommand = [this](const std::string& source) {
        constexpr std::string_view kFile = "file:";
        return source.starts_with(kFile)
                   ? std::string(kFile) + paths_.inCommand(source.substr(kFile.size()))
                   : source;
    };
    Recipe recipe = newRecipe(Sign);
    CommandText command = javaTool(recipe, "apksigner", nullptr);
    const auto option = [&command](const char* name, const std::string& value) {
        if (!value.empty()) {
            command.add(name);
            command.add(value);
        }
    };
    command.add("sign");
    option("--ks", paths_.inCommand(key.keystore));
    option("--ks-key-alias", key.alias);
    option("--ks-pass", inCommand(key.storePassword));
    option("--key-pass", inCommand(key.keyPassword));
    addFlags(command, target_, "SIGN_FLAGS");
    option("--out", paths_.inCommand(product_));
    command.add(paths_.inCommand(unsigned_));

    recipe.command = command.text();
    recipe.oldOutputs = OldOutputs::Go;
    addInput(recipe, "unsigned", unsigned_);
    addInput(recipe, "KEYSTORE", key.keystore);
    addOutput(recipe, "APK", product_);
    recipe.declaration = Declaration::Complete;
    Command run = recipe;
    recipe.action = [key = std::move(key), run = std::move(run), product = product_] {
        requireSigningKey(key);
        runOrThrow(run);
        if (!isFile(product)) {
            throw VeskException(fmt::format(
                "The signer has reported success, but there is no '{}'. Does Java run?", product));
        }
    };
    recipes.push_back(std::move(recipe));
}

}  // namespace Vesk
