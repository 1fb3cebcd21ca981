// Java sources to classes, classes to DEX files.

#include <algorithm>
#include <fmt/format.h>
#include <iterator>

#include "platform/files.h"
#include "platform/system.h"
#include "tools/android/apk_recipes.h"
#include "tools/android/java_programs.h"
#include "tools/android/zip_file.h"
#include "tools/support/file_patterns.h"
#include "tools/support/run_step.h"
#include "tools/support/value_lists.h"

namespace Vesk {

namespace {

/// One argument per line.
std::string argumentLines(const std::vector<std::string>& arguments) {
    std::string lines;
    for (const std::string& argument : arguments) {
        lines += argument + "\n";
    }
    return lines;
}

std::vector<std::string> quotedForJava(std::vector<std::string> arguments) {
    for (std::string& argument : arguments) {
        argument = quoteForResponseFile(argument);
    }
    return arguments;
}

/// All class files below a directory, ordered by name.
void archiveClasses(const std::string& directory, const std::string& archive) {
    ZipWriter writer(platform::pathFromUtf8(archive));
    for (const std::string& file : filesMatching(directory + "/**/*.class", {})) {
        writer.add(file.substr(directory.size() + 1), platform::pathFromUtf8(file));
    }
    writer.finish();
}

}  // namespace

void ApkRecipes::compileJava() {
    const std::vector<std::string> sources = paths_.files("JAVA_FILES");
    if (sources.empty()) {
        return;
    }
    javaClasses_ = inObjects("classes.jar");
    const std::string directory = inObjects("classes");
    const std::string program = requireJavaProgram("javac", tools_.javaPath);
    const std::string list = inObjects("javac.args");
    std::vector<std::string> classPath = paths_.files("CLASS_PATH");
    classPath.insert(classPath.begin(), tools_.platformJar);

    Recipe recipe = newRecipe(Java);
    CommandText command;
    command.add(nativePath(program));
    command.add("-encoding");
    command.add("UTF-8");
    command.add("-proc:none");
    if (hasEntries(target_, "JAVA_FLAGS")) {
        addFlags(command, target_, "JAVA_FLAGS");
    } else {
        command.addAsWritten("--release 8 -Xlint:-options");
    }
    command.add("-d");
    command.add(paths_.inCommand(directory));
    command.add("-classpath");
    std::string joinedPath;
    for (const std::string& entry : paths_.inCommand(classPath)) {
        joinedPath += (joinedPath.empty() ? "" : std::string(1, platform::kPathListSeparator));
        joinedPath += entry;
    }
    command.add(joinedPath);
    command.add("@" + paths_.inCommand(list));
    recipe.command = command.text();
    addInputs(recipe, "JAVA_FILES", sources);
    addInputs(recipe, "CLASS_PATH", classPath);
    // The place of R.java's class depends on what the manifest says.
    addInput(recipe, "MANIFEST", manifest_);
    addInput(recipe, "symbols", symbols_);
    addInput(recipe, "program", program);
    addOutput(recipe, "classes", javaClasses_);
    Command run = recipe;
    recipe.action = [run = std::move(run), directory, list, sources = paths_.inCommand(sources),
                     generated = javaDirectory_, root = paths_.root(), archive = javaClasses_] {
        std::vector<std::string> all = sources;
        for (const std::string& file : filesMatching(generated + "/**/*.java", {})) {
            all.push_back(file.starts_with(root + "/") ? file.substr(root.size() + 1) : file);
        }
        writeArguments(list, argumentLines(quotedForJava(std::move(all))));
        renewDirectory(platform::pathFromUtf8(directory));
        runOrThrow(run);
        archiveClasses(directory, archive);
    };
    recipes.push_back(std::move(recipe));
}

std::vector<std::string> ApkRecipes::classFiles() const {
    std::vector<std::string> files;
    for (std::string& path : paths_.files("CLASS_FILES")) {
        const auto status = platform::fileStatus(platform::pathFromUtf8(path));
        if (!status || !status->directory) {
            files.push_back(std::move(path));
            continue;
        }
        std::ranges::move(filesBelow(path, "**/*.class", "CLASS_FILES"), std::back_inserter(files));
    }
    if (!javaClasses_.empty()) {
        files.push_back(javaClasses_);
    }
    return files;
}

void ApkRecipes::compileClasses() {
    const std::vector<std::string> files = classFiles();
    if (files.empty()) {
        return;
    }
    dexArchive_ = inObjects("dex.zip");
    const std::string list = inObjects("d8.args");
    Recipe recipe = newRecipe(Dex);
    CommandText command = javaTool(recipe, "d8", "com.android.tools.r8.D8");
    if (hasEntries(target_, "D8_FLAGS")) {
        addFlags(command, target_, "D8_FLAGS");
    } else {
        command.add("--release");
    }
    if (const std::string minimum = text("MIN_SDK"); !minimum.empty()) {
        command.add("--min-api");
        command.add(minimum);
    }
    command.add("--lib");
    command.add(paths_.inCommand(tools_.platformJar));
    command.add("--output");
    command.add(paths_.inCommand(dexArchive_));
    command.add("@" + paths_.inCommand(list));
    recipe.command = command.text();
    recipe.supportFiles.push_back(
        {platform::pathFromUtf8(list), argumentLines(paths_.inCommand(files))});
    recipe.oldOutputs = OldOutputs::Go;
    addInputs(recipe, "CLASS_FILES", files);
    addInput(recipe, "platform", tools_.platformJar);
    addOutput(recipe, "dex", dexArchive_);
    recipes.push_back(std::move(recipe));
}

}  // namespace Vesk
