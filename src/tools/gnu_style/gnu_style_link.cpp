// Makes products from objects.

#include <algorithm>
#include <fmt/format.h>

#include "base/exception.h"
#include "platform/files.h"
#include "tools/discovery/triple.h"
#include "tools/gnu_style/gnu_style.h"
#include "tools/support/flag_files.h"
#include "tools/support/libraries.h"
#include "tools/support/recipe_parts.h"
#include "tools/support/value_lists.h"
#include "types/values/string_values.h"

namespace Vesk {

namespace {

constexpr const char* kCpp = "c++";

std::string directoryOf(const std::string& path) {
    return path.substr(0, path.rfind('/'));
}

/// The entries of LIBS as linker options. An entry may already be an option or a file.
std::vector<std::string> libraryOptions(const std::vector<std::string>& names) {
    std::vector<std::string> options;
    for (const std::string& name : names) {
        const bool asItIs = name.starts_with('-') || isLibraryPath(name);
        options.push_back(asItIs ? name : "-l" + name);
    }
    return options;
}

/// The suffix of files in an object copier's format.
const char* suffixOf(std::string_view format) noexcept {
    if (format == "binary") {
        return ".bin";
    }
    if (format == "ihex") {
        return ".hex";
    }
    return format == "srec" ? ".srec" : "";
}

}  // namespace

GnuStyleBuild::Product GnuStyleBuild::productOf() const {
    const std::string name = outputNameOf(target_);
    const bool windows = isWindowsTriple(style_.triple());
    Product product;
    std::string file = name;
    if (!hasSuffix(name)) {
        const char* shared = isAppleTriple(style_.triple()) ? ".dylib" : ".so";
        switch (type_) {
            case OutputType::Static:
                file = decorated(name, "lib", ".a");
                break;
            case OutputType::Shared:
                file = windows ? decorated(name, "", ".dll") : decorated(name, "lib", shared);
                break;
            case OutputType::Relocatable:
                file = decorated(name, "", ".o");
                break;
            default:
                file = decorated(name, "", windows ? ".exe" : "");
        }
    }
    product.path = paths_.inOutputDirectory(file);
    product.name = paths_.inCommand(product.path);
    if (type_ == OutputType::Shared && windows) {
        const std::string stem = name.substr(0, hasSuffix(name) ? name.rfind('.') : name.size());
        product.importLibrary = paths_.inOutputDirectory(decorated(stem, "lib", ".dll.a"));
    }
    return product;
}

Recipe GnuStyleBuild::productRecipe(const Product& product, const std::string& program) const {
    if (objects_.empty() && type_ != OutputType::Static) {
        throw VeskException(
            fmt::format("There is nothing to make '{}' from: C_FILES, CPP_FILES, ASM_FILES and "
                        "OBJ_FILES name no "
                        "file.",
                        product.name));
    }
    Recipe recipe;
    recipe.stage = 1;
    recipe.role = RecipeRole::Link;
    recipe.searchDirectories = style_.searchDirectories();
    addInputs(recipe, "OBJECTS", objects_);
    addInput(recipe, "program", program);
    return recipe;
}

void GnuStyleBuild::finishProduct(Recipe recipe, const CommandText& command,
                                  const Product& product) {
    const std::string stem =
        paths_.objectDirectory() + product.path.substr(product.path.rfind('/'));
    command.finish(recipe, platform::pathFromUtf8(stem), paths_.inCommand(stem));
    const Assignment output =
        resolvedAssignment("OUTPUT", pathValue(product.path), AssignModifier::Output);
    recipe.outputs.push_back(output);
    outputs.push_back(output);
    if (!product.importLibrary.empty()) {
        recipe.outputs.push_back(resolvedAssignment("LIBRARY", pathValue(product.importLibrary),
                                                    AssignModifier::Output));
    }
    recipes.push_back(std::move(recipe));
}

bool GnuStyleBuild::linksCpp() const {
    const bool asked = equalsIgnoringCase(target_.textOf("LINK_LANGUAGE").value_or(""), kCpp);
    return asked || driver_ == Language::Cpp ||
           std::ranges::any_of(
               sources_, [](const SourceFile& source) { return source.language == Language::Cpp; });
}

void GnuStyleBuild::link() {
    const Product product = productOf();
    const std::string program =
        style_.program(linksCpp() ? GnuProgram::CppCompiler : GnuProgram::CCompiler);
    Recipe recipe = productRecipe(product, program);

    CommandText command;
    command.add(nativePath(program));
    command.add({}, style_.compilerOptions());
    command.add({}, style_.linkerOptions());
    if (hasEntries(target_, "LINKER")) {
        command.add("-fuse-ld=", *target_.textOf("LINKER"));
    }
    addFlags(command, target_, "FLAGS");
    addSharedOptions(command, product);
    command.add("-o");
    command.add(product.name);
    command.allowResponseFile();
    command.add({}, paths_.inCommand(objects_));
    addScript(command, recipe);
    addRunPaths(command, product);
    addLibraries(command, recipe);
    addPackages(command, recipe);
    addInputs(recipe, "FLAGS", flagFiles(target_, paths_, {"FLAGS"}));
    finishProduct(std::move(recipe), command, product);
    if (type_ == OutputType::Shared) {
        addLibraryOutputs(product);
    }
}

/// Calls the linker itself, for scripts and for objects that are linked again later.
void GnuStyleBuild::linkByHand() {
    const Product product = productOf();
    const std::string program = style_.program(GnuProgram::Linker);
    Recipe recipe = productRecipe(product, program);
    CommandText command;
    command.add(nativePath(program));
    if (type_ == OutputType::Relocatable) {
        command.add("-r");
    } else if (type_ == OutputType::Shared) {
        command.add("-shared");
    }
    command.add("-o");
    command.add(product.name);
    command.allowResponseFile();
    addScript(command, recipe);
    command.add({}, paths_.inCommand(objects_));
    addLibraries(command, recipe);
    finishProduct(std::move(recipe), command, product);
    if (type_ == OutputType::Relocatable) {
        exportAppend(outputs, "OBJ_FILES", pathValues({product.path}));
    }
}

void GnuStyleBuild::archive() {
    const Product product = productOf();
    const std::string program = style_.program(GnuProgram::Archiver);
    Recipe recipe = productRecipe(product, program);
    // An archiver adds to an existing archive, so members whose sources are gone would stay.
    recipe.oldOutputs = OldOutputs::Go;
    recipe.declaration =
        Declaration::Complete;  // libraries that the target uses do not become part of it
    CommandText command;
    command.add(nativePath(program));
    command.add("rcs");
    addFlags(command, target_, "AR_FLAGS");
    command.add(product.name);
    command.allowResponseFile();
    command.add({}, paths_.inCommand(objects_));
    addInputs(recipe, "AR_FLAGS", flagFiles(target_, paths_, {"AR_FLAGS"}));
    finishProduct(std::move(recipe), command, product);
    addLibraryOutputs(product);
}

void GnuStyleBuild::copyObject() {
    const std::vector<std::string> inputs = paths_.files("OBJCOPY_INPUT");
    if (inputs.size() != 1) {
        throw VeskException(
            fmt::format("OBJCOPY_INPUT must name one file; it names {}.", inputs.size()));
    }
    const std::string format = target_.textOf("OBJCOPY_FORMAT").value_or("");
    const std::string name = outputNameOf(target_);
    const std::string suffix = hasSuffix(name) ? "" : suffixOf(format);
    Product product;
    product.path = paths_.inOutputDirectory(name + suffix);
    product.name = paths_.inCommand(product.path);
    if (product.path == inputs.front()) {
        throw VeskException(fmt::format(
            "'{}' would be overwritten by what is made of it. Give OUTPUT_NAME another name.",
            product.name));
    }
    const std::string program = style_.program(GnuProgram::ObjectCopier);
    CommandText command;
    command.add(nativePath(program));
    if (!format.empty()) {
        command.add("-O");
        command.add(format);
    }
    for (const std::string& section : entriesOf(target_, "OBJCOPY_SECTIONS")) {
        command.add("-j");
        command.add(section);
    }
    addFlags(command, target_, "OBJCOPY_FLAGS");
    command.add(paths_.inCommand(inputs.front()));
    command.add(product.name);
    objects_ = inputs;
    Recipe recipe = productRecipe(product, program);
    addInputs(recipe, "OBJCOPY_FLAGS", flagFiles(target_, paths_, {"OBJCOPY_FLAGS"}));
    recipe.role = RecipeRole::Any;  // a source may include the result
    finishProduct(std::move(recipe), command, product);
}

/// Named by its file name alone: a program linked with it by a path would look for that path.
void GnuStyleBuild::addSharedOptions(CommandText& command, const Product& product) const {
    if (type_ != OutputType::Shared) {
        return;
    }
    command.add("-shared");
    const std::string file = product.path.substr(product.path.rfind('/') + 1);
    if (!product.importLibrary.empty()) {
        command.add("-Wl,--out-implib,", paths_.inCommand(product.importLibrary));
    } else if (isAppleTriple(style_.triple())) {
        command.add("-Wl,-install_name,@rpath/", file);
    } else {
        command.add("-Wl,-soname,", file);
    }
}

/// So that the product runs where it was built, and anywhere else with the same directories.
void GnuStyleBuild::addRunPaths(CommandText& command, const Product& product) const {
    if (isWindowsTriple(style_.triple())) {
        return;
    }
    const char* origin = isAppleTriple(style_.triple()) ? "@loader_path" : "$ORIGIN";
    command.add("-Wl,-rpath,", runPaths(libraries_, directoryOf(product.path), origin, paths_));
}

void GnuStyleBuild::addLibraries(CommandText& command, Recipe& recipe) const {
    const std::vector<std::string> directories = paths_.absolute(entriesOf(target_, "LIB_DIRS"));
    const std::vector<std::string> names = atLastPlace(entriesOf(target_, "LIBS"));
    command.add({}, paths_.inCommand(libraries_));
    addFlags(command, target_, "LINK_FLAGS");
    command.add("-L", paths_.inCommand(directories));
    command.add({}, libraryOptions(names));
    addInputs(recipe, "LIB_FILES", libraries_);
    addInputs(recipe, "LIBS", librariesIn(directories, names, paths_.root()));
    addInputs(recipe, "LINK_FLAGS", flagFiles(target_, paths_, {"LINK_FLAGS"}));
}

/// Behind everything else, since anything may need them.
void GnuStyleBuild::addPackages(CommandText& command, Recipe& recipe) const {
    const std::vector<std::string> words = style_.packages().link;
    command.add({}, words);
    std::vector<std::string> directories;
    std::vector<std::string> names;
    for (const std::string& word : words) {
        if (word.starts_with("-L")) {
            directories.push_back(normalPath(word.substr(2), paths_.root()));
        } else if (word.starts_with("-l") || !word.starts_with('-')) {
            names.push_back(word);
        }
    }
    addInputs(recipe, "LIBS", librariesIn(directories, names, paths_.root()));
}

void GnuStyleBuild::addScript(CommandText& command, Recipe& recipe) const {
    for (const std::string& script : paths_.files("LINKER_SCRIPT")) {
        command.add("-T");
        command.add(paths_.inCommand(script));
        addInput(recipe, "LINKER_SCRIPT", script);
    }
    for (const std::string& definitions : paths_.files("DEF_FILE")) {
        command.add(paths_.inCommand(definitions));
        addInput(recipe, "DEF_FILE", definitions);
    }
}

/// What dependants need to link with this target: the library, in front of those that it needs.
void GnuStyleBuild::addLibraryOutputs(const Product& product) {
    std::vector<std::string> files;
    const std::string& library =
        product.importLibrary.empty() ? product.path : product.importLibrary;
    if (!library.empty()) {
        files.push_back(library);
        outputs.push_back(
            resolvedAssignment("LIBRARY", pathValue(library), AssignModifier::Output));
    }
    const bool linked = type_ == OutputType::Shared;
    for (const std::string& each : libraries_) {
        if (!linked || isSharedLibrary(each)) {
            files.push_back(each);
        }
    }
    exportAppend(outputs, "LIB_FILES", pathValues(files));
    if (linked) {
        return;
    }
    exportAppend(outputs, "LIBS", textValues(atLastPlace(entriesOf(target_, "LIBS"))));
    exportAppend(outputs, "LIB_DIRS", pathValues(paths_.absolute(entriesOf(target_, "LIB_DIRS"))));
    exportAppend(outputs, "PACKAGES", textValues(packagesNamed(entriesOf(target_, "PACKAGES"))));
    if (linksCpp()) {
        outputs.push_back(resolvedAssignment("LINK_LANGUAGE", std::make_shared<VeskRawString>(kCpp),
                                             AssignModifier::Output));
    }
}

}  // namespace Vesk
