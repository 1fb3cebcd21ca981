// Compiles and links resources.

#include <fmt/format.h>
#include <xxhash.h>

#include "base/console.h"
#include "base/exception.h"
#include "platform/files.h"
#include "tools/android/apk_recipes.h"
#include "tools/android/zip_file.h"
#include "tools/support/run_step.h"
#include "tools/support/value_lists.h"

namespace Vesk {

namespace {

/// The resource compiler's name for the result of `res/values-de/strings.xml`.
std::string compiledName(std::string_view file) {
    const std::size_t nameStart = file.rfind('/') + 1;
    const std::size_t typeStart = file.rfind('/', nameStart - 2) + 1;
    const std::string_view type = file.substr(typeStart, nameStart - 1 - typeStart);
    std::string_view name = file.substr(nameStart);
    constexpr std::string_view kXml = ".xml";
    const bool values = type.substr(0, type.find('-')) == "values" && name.ends_with(kXml);
    if (values) {
        name.remove_suffix(kXml.size());
    }
    return fmt::format("{}_{}{}.flat", type, name, values ? ".arsc" : "");
}

/// Whether a file, by its name in the resource directory, begins the next batch. Names decide, so
/// that a new file changes one batch and not all those behind it.
bool endsBatch(const std::vector<std::string>& batch, std::string_view next) {
    constexpr std::size_t kUsualSize = 24;
    constexpr std::size_t kMostBytes = 5000;  // the interpreter of Windows takes about 8,000
    std::size_t bytes = next.size();
    for (const std::string& file : batch) {
        bytes += file.size() + 3;
    }
    return !batch.empty() &&
           (bytes > kMostBytes || XXH3_64bits(next.data(), next.size()) % kUsualSize == 0);
}

}  // namespace

void ApkRecipes::compileResources() {
    for (const std::string& directory : paths_.absolute(entriesOf(target_, "RES_DIRS"))) {
        compileDirectory(directory);
    }
}

void ApkRecipes::compileDirectory(const std::string& directory) {
    const std::string compiledDirectory = paths_.objectStem(directory);
    std::vector<std::string> compiled;
    std::vector<std::string> batch;
    for (std::string& file : filesBelow(directory, "*/*", "RES_DIRS")) {
        compiled.push_back(compiledDirectory + "/" + compiledName(file));
        if (endsBatch(batch, std::string_view(file).substr(directory.size() + 1))) {
            recipes.push_back(batchRecipe(batch, compiledDirectory));
            batch.clear();
        }
        batch.push_back(std::move(file));
    }
    if (!compiled.empty()) {
        recipes.push_back(batchRecipe(batch, compiledDirectory));
        bundle(compiledDirectory + ".zip", std::move(compiled));
    }
}

/// A process for each file would take far longer to start than to do its work.
Recipe ApkRecipes::batchRecipe(const std::vector<std::string>& batch,
                               const std::string& compiledDirectory) const {
    const std::string program = buildToolPath(tools_.buildTools, "aapt2");
    Recipe recipe = newRecipe(Compile);
    CommandText command;
    command.add(nativePath(program));
    command.add("compile");
    addFlags(command, target_, "AAPT2_COMPILE_FLAGS");
    command.add("-o");
    command.add(paths_.inCommand(compiledDirectory));
    command.add({}, paths_.inCommand(batch));
    recipe.command = command.text();
    recipe.start = Start::Queued;
    recipe.declaration = Declaration::Complete;
    addInputs(recipe, "RES_DIRS", batch);
    addInput(recipe, "program", program);
    for (const std::string& file : batch) {
        addOutput(recipe, "compiled", compiledDirectory + "/" + compiledName(file));
    }
    return recipe;
}

/// The linker does not read file names from a file, and a command must not grow with the project.
void ApkRecipes::bundle(const std::string& archive, std::vector<std::string> compiled) {
    Recipe recipe = newRecipe(Bundle);
    recipe.command = fmt::format("Bundling {}", paths_.inCommand(archive));
    addInputs(recipe, "compiled", compiled);
    addOutput(recipe, "resources", archive);
    recipe.declaration = Declaration::Complete;
    recipe.action = [archive, compiled = std::move(compiled), shown = recipe.command] {
        console::normal("{}", shown);
        ZipWriter writer(platform::pathFromUtf8(archive));
        for (const std::string& file : compiled) {
            writer.add(file.substr(file.rfind('/') + 1), platform::pathFromUtf8(file));
        }
        writer.finish();
    };
    recipes.push_back(std::move(recipe));
    resources_.push_back(archive);
}

void ApkRecipes::addManifestOptions(CommandText& command) const {
    const auto option = [&command](const char* name, const std::string& value) {
        if (!value.empty()) {
            command.add(name);
            command.add(value);
        }
    };
    option("--rename-manifest-package", text("PACKAGE_NAME"));
    option("--version-code", text("VERSION_CODE"));
    option("--version-name", text("VERSION_NAME"));
    if (!text("VERSION_CODE").empty() || !text("VERSION_NAME").empty()) {
        command.add("--replace-version");
    }
    option("--min-sdk-version", text("MIN_SDK"));
    const std::string asked = text("TARGET_SDK");
    option("--target-sdk-version", asked.empty() ? tools_.platformVersion : asked);
}

void ApkRecipes::addAssets(CommandText& command, Recipe& recipe) const {
    for (const std::string& directory : paths_.absolute(entriesOf(target_, "ASSET_DIRS"))) {
        command.add("-A");
        command.add(paths_.inCommand(directory));
        addInputs(recipe, "ASSET_DIRS", filesBelow(directory, "**/*", "ASSET_DIRS"));
    }
}

void ApkRecipes::link() {
    const std::string program = buildToolPath(tools_.buildTools, "aapt2");
    Recipe recipe = newRecipe(Link);
    CommandText command;
    command.add(nativePath(program));
    command.add("link");
    command.add("-o");
    command.add(paths_.inCommand(base_));
    command.add("-I");
    command.add(paths_.inCommand(tools_.platformJar));
    command.add("--manifest");
    command.add(paths_.inCommand(manifest_));
    command.add("--java");
    command.add(paths_.inCommand(javaDirectory_));
    command.add("--output-text-symbols");
    command.add(paths_.inCommand(symbols_));
    addManifestOptions(command);
    addAssets(command, recipe);
    addFlags(command, target_, "AAPT2_FLAGS");
    // A later directory overrides an earlier one.
    if (resources_.size() > 1) {
        command.add("--auto-add-overlay");
    }
    for (const std::string& archive : resources_) {
        if (archive != resources_.front()) {
            command.add("-R");
        }
        command.add(paths_.inCommand(archive));
    }
    recipe.command = command.text();
    addInput(recipe, "MANIFEST", manifest_);
    addInput(recipe, "platform", tools_.platformJar);
    addInput(recipe, "program", program);
    addInputs(recipe, "resources", resources_);
    addOutput(recipe, "base", base_);
    addOutput(recipe, "symbols", symbols_);
    // The package's name is that of a directory there; nothing may stay under an old name.
    recipe.outputDirectory = platform::pathFromUtf8(javaDirectory_);
    recipe.oldOutputs = OldOutputs::Go;
    recipes.push_back(std::move(recipe));
}

}  // namespace Vesk
