// Compiling, and what all steps share.

#include <algorithm>
#include <array>
#include <optional>

#include "platform/files.h"
#include "tools/discovery/triple.h"
#include "tools/gnu_style/gnu_style.h"
#include "tools/support/flag_files.h"
#include "tools/support/header_search.h"
#include "tools/support/libraries.h"
#include "tools/support/recipe_parts.h"
#include "tools/support/value_lists.h"

namespace Vesk {

namespace {

constexpr const char* kObjectSuffix = ".o";

/// The option that tells the compiler a source's language if its name suggests another one.
const char* languageOption(const SourceFile& source) {
    struct Known {
        const char* option;
        std::vector<std::string_view> extensions;
    };
    static const std::array<Known, 3> known = {{
        {"c", {".c", ".i", ".m"}},
        {"c++", {".cpp", ".cc", ".cxx", ".c++", ".C", ".CPP", ".cp", ".ii", ".mm"}},
        {"assembler-with-cpp", {".S", ".sx", ".s"}},
    }};
    const Known& language = known[static_cast<std::size_t>(source.language)];
    const auto& extensions = language.extensions;
    return std::ranges::find(extensions, source.extension()) == extensions.end() ? language.option
                                                                                 : nullptr;
}

}  // namespace

GnuStyleBuild::GnuStyleBuild(const TargetContext& target, const BuildEnv& environment,
                             const GnuStyle& style)
    : target_(target),
      style_(style),
      paths_(target, environment),
      type_(outputTypeOf(target)),
      libraries_(atLastPlace(paths_.files("LIB_FILES"))) {}

void GnuStyleBuild::make(Language driver) {
    driver_ = driver;
    sources_ = sourceFiles(target_, paths_, kObjectSuffix);
    objects_.reserve(sources_.size());
    for (const SourceFile& source : sources_) {
        objects_.push_back(source.object);
    }
    compile();
    addCommonOutputs();
    std::ranges::move(atLastPlace(paths_.files("OBJ_FILES")), std::back_inserter(objects_));

    switch (type_) {
        case OutputType::Object:
            exportAppend(outputs, "OBJ_FILES", pathValues(objects_));
            addLibraryOutputs({});
            break;
        case OutputType::Static:
            archive();
            break;
        case OutputType::Relocatable:
            linkByHand();
            break;
        case OutputType::Executable:
        case OutputType::Shared:
            // A script without sources is for the linker itself: its author wants nothing of a
            // compiler in the product.
            if (sources_.empty() && hasEntries(target_, "LINKER_SCRIPT")) {
                linkByHand();
            } else {
                link();
            }
            break;
    }
}

void GnuStyleBuild::compile() {
    std::array<std::optional<Compiler>, std::size(kLanguages)> compilers;
    recipes.reserve(sources_.size() + 1);
    for (const SourceFile& source : sources_) {
        auto& compiler = compilers[static_cast<std::size_t>(source.language)];
        if (!compiler) {
            compiler = compilerFor(source.language);
        }
        recipes.push_back(compileRecipe(source, *compiler));
    }
}

GnuStyleBuild::Compiler GnuStyleBuild::compilerFor(Language language) const {
    const std::string program =
        style_.program(language == Language::Cpp ? GnuProgram::CppCompiler : GnuProgram::CCompiler);
    CommandText command;
    addFlags(command, target_, "LAUNCHER");
    command.add(nativePath(program));
    command.allowResponseFile();
    command.add({}, style_.compilerOptions());
    if (type_ == OutputType::Shared && !isWindowsTriple(style_.triple())) {
        command.add("-fPIC");
    }
    addFlags(command, target_, "FLAGS");
    addFlags(command, target_, flagsVariable(language));
    command.add("-D", entriesOf(target_, "DEFINES"));
    const auto directories = [this](const char* variable) {
        return paths_.inCommand(paths_.absolute(entriesOf(target_, variable)));
    };
    command.add("-I", directories("INCLUDE_DIRS"));
    for (const std::string& directory : directories("SYSTEM_INCLUDE_DIRS")) {
        command.add("-isystem");
        command.add(directory);
    }
    const std::vector<std::string> ofPackages = style_.packages().compile;
    command.add({}, ofPackages);
    return {std::move(command), resolvedAssignment("program", pathValue(program)),
            headerSearch(target_, paths_, {"FLAGS", flagsVariable(language)}, ofPackages),
            flagFiles(target_, paths_, {"FLAGS", flagsVariable(language)})};
}

Recipe GnuStyleBuild::compileRecipe(const SourceFile& source, const Compiler& compiler) const {
    CommandText command = compiler.command;
    Recipe recipe;
    if (const char* language = languageOption(source)) {
        command.add("-x");
        command.add(language);
    }
    // The preprocessor writes the dependency file, and plain assembler skips the preprocessor.
    if (source.extension() != ".s") {
        command.add("-MMD");
        command.add("-MF");
        command.add(paths_.inCommand(source.dependencyFile));
        recipe.dependencyFile = platform::pathFromUtf8(source.dependencyFile);
        recipe.headerSearch = compiler.headerSearch;
    }
    command.add("-c");
    command.add(paths_.inCommand(source.path));
    command.add("-o");
    command.add(paths_.inCommand(source.object));
    command.finish(recipe, platform::pathFromUtf8(source.object), paths_.inCommand(source.object));

    const ValuePtr object = pathValue(source.object);
    recipe.inputs.reserve(2);
    recipe.inputs.push_back(
        {resolvedAssignment(filesVariable(source.language), pathValue(source.path)),
         resolvedAssignment("OBJECTS", object)});
    recipe.inputs.push_back({compiler.program, std::nullopt});
    addInputs(recipe, "FLAGS", compiler.flagFiles);
    recipe.outputs.push_back(resolvedAssignment("OBJECTS", object, AssignModifier::Output));
    recipe.searchDirectories = style_.searchDirectories();
    recipe.role = RecipeRole::Compile;
    recipe.start = Start::Queued;
    return recipe;
}

void GnuStyleBuild::addCommonOutputs() {
    std::vector<std::string> dependencyFiles;
    for (const SourceFile& source : sources_) {
        if (source.extension() != ".s") {
            dependencyFiles.push_back(source.dependencyFile);
        }
    }
    outputs.push_back(resolvedAssignment("OBJECTS", pathValues(objects_), AssignModifier::Output));
    outputs.push_back(
        resolvedAssignment("DEPFILES", pathValues(dependencyFiles), AssignModifier::Output));
}

}  // namespace Vesk
