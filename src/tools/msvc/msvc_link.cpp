// Makes products from objects: linking, archiving, signing, packing.

#include <algorithm>
#include <fmt/format.h>

#include "base/exception.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/system.h"
#include "run/command_line.h"
#include "tools/msvc/msvc_build.h"
#include "tools/msvc/msvc_packages.h"
#include "tools/support/flag_files.h"
#include "tools/support/libraries.h"
#include "tools/support/recipe_parts.h"
#include "tools/support/value_lists.h"

namespace Vesk {

namespace {

/// The files of the entries of LIBS.
std::vector<std::string> libraryFiles(const std::vector<std::string>& names) {
    std::vector<std::string> files;
    for (const std::string& name : names) {
        const bool asItIs = name.starts_with('-') || isLibraryPath(name) || name.ends_with(".lib");
        if (std::string file = asItIs ? name : libraryFileOf(name); !file.empty()) {
            files.push_back(std::move(file));
        }
    }
    return files;
}

/// Those that lie in one of the directories, so that a change in them is noticed. The linker first
/// looks in the directory where it runs; a name may be a path from there.
std::vector<std::string> filesIn(std::vector<std::string> directories,
                                 const std::vector<std::string>& names, const std::string& root) {
    constexpr std::string_view kOption = "defaultlib:";
    directories.insert(directories.begin(), root);
    std::vector<std::string> found;
    for (std::string name : names) {
        if (equalsIgnoringCase(std::string_view(name).substr(1, kOption.size()), kOption)) {
            name.erase(0, 1 + kOption.size());
            name += hasSuffix(name) ? "" : ".lib";
        }
        for (const std::string& directory : directories) {
            if (std::string path = normalPath(name, directory); isFile(path)) {
                found.push_back(std::move(path));
                break;
            }
        }
    }
    return found;
}

/// The only entry of a variable that names a file; empty if the variable is missing.
std::string oneFile(const TargetPaths& paths, const char* variable) {
    const std::vector<std::string> files = paths.files(variable);
    if (files.size() > 1) {
        throw VeskException(
            fmt::format("{} must name one file; it names {}. A name with blanks is "
                        "written P\"(my file)\".",
                        variable, files.size()));
    }
    return files.empty() ? std::string() : files.front();
}

/// The command interpreter's copy treats even a plus sign in a name specially.
std::string copyCommand(const std::string& from, const std::string& to) {
    if (platform::kWindows) {
        return fmt::format("copy /y /b {} {} >NUL", quoteArgument(nativePath(from)),
                           quoteArgument(nativePath(to)));
    }
    return fmt::format("cp -f -- {} {}", quoteForPosix(from), quoteForPosix(to));
}

/// How catalogues call the oldest system that the drivers support.
const char* catalogueSystem(const Architecture& architecture) {
    return architecture.directory == "x64"   ? "10_X64"
           : architecture.directory == "x86" ? "10_X86"
                                             : "10_RS3_ARM64";
}

std::string fileName(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

}  // namespace

std::string MsvcBuild::suffix() const {
    switch (type_) {
        case OutputType::Static:
            return ".lib";
        case OutputType::Shared:
            return ".dll";
        default:
            return driver_.kernel()                       ? ".sys"
                   : driver_.model() != DriverModel::None ? ".dll"
                                                          : ".exe";
    }
}

MsvcBuild::Product MsvcBuild::productOf() const {
    const std::string name = outputNameOf(target_);
    const std::string stem = hasSuffix(name) ? name.substr(0, name.rfind('.')) : name;
    Product product;
    product.path = paths_.inOutputDirectory(hasSuffix(name) ? name : name + suffix());
    product.linked = product.path;
    if (type_ == OutputType::Static) {
        return product;
    }
    if (signing_.wanted()) {
        // Signing changes a file. The linker's own output stays unchanged.
        product.linked = paths_.objectDirectory() + "/unsigned/" + fileName(product.path);
    }
    if (type_ == OutputType::Shared && !objects_.empty() && says("IMPORT_LIBRARY", true)) {
        product.importLibrary = paths_.inOutputDirectory(stem + ".lib");
    }
    if (says("PDB", false)) {
        product.debugFile = paths_.inOutputDirectory(stem + ".pdb");
    }
    return product;
}

void MsvcBuild::archive() {
    const Product product = productOf();
    const std::string librarian = program(MsvcProgram::Librarian);
    Recipe recipe = stageRecipe(librarian);
    CommandText command(ResponseFiles::Windows);
    command.add(nativePath(librarian));
    command.add("/nologo");
    command.add("/OUT:", inCommand(product.path));
    command.allowResponseFile();
    command.add("/MACHINE:", directories_.architecture->machine);
    addFlags(command, target_, "AR_FLAGS");
    command.add({}, inCommand(objects_));
    addInputs(recipe, "AR_FLAGS", flagFiles(target_, paths_, {"AR_FLAGS"}));
    finishProduct(std::move(recipe), command, product);
    // A library holds no resources; whoever links it links them.
    exportAppend(outputs, "OBJ_FILES", pathValues(resources_));
    addLibraryOutputs(product.path);
}

void MsvcBuild::link() {
    if (objects_.empty() && resources_.empty()) {
        throw VeskException(
            fmt::format("There is nothing to make '{}' from: C_FILES, CPP_FILES, ASM_FILES, "
                        "OBJ_FILES, RC_FILES "
                        "and MC_FILES name no file.",
                        paths_.inCommand(productOf().path)));
    }
    const Product product = productOf();
    const std::string linker = program(MsvcProgram::Linker, target_.textOf("LINKER").value_or(""));
    Recipe recipe = stageRecipe(linker);
    CommandText command(ResponseFiles::Windows);
    command.add(nativePath(linker));
    command.add("/nologo");
    command.add("/OUT:", inCommand(product.linked));
    command.allowResponseFile();
    addLinkOptions(command, recipe, product);
    command.add({}, inCommand(objects_));
    command.add({}, inCommand(resources_));
    addLibraries(command, recipe);
    addPackages(command, recipe);
    if (const auto options = platform::environmentVariable("LINK"); options && !options->empty()) {
        recipe.inputs.push_back({textAssignment("LINK", *options), std::nullopt});
    }
    finishProduct(std::move(recipe), command, product);
    if (type_ == OutputType::Shared) {
        addLibraryOutputs(product.importLibrary);
    }
    if (hasEntries(target_, "INF_FILE")) {
        package(product.path);
    }
}

void MsvcBuild::addLinkOptions(CommandText& command, Recipe& recipe, const Product& product) const {
    command.add("/MACHINE:", directories_.architecture->machine);
    if (says("REPRODUCIBLE", true)) {
        command.add("/Brepro");
        command.add("/INCREMENTAL:NO");
    }
    const bool library = type_ == OutputType::Shared || driver_.model() == DriverModel::Umdf;
    const bool entry = hasEntries(target_, "ENTRY");
    if (library) {
        command.add("/DLL");
        if (objects_.empty() && !entry) {
            command.add("/NOENTRY");
        }
    }
    if (!product.importLibrary.empty()) {
        command.add("/IMPLIB:", inCommand(product.importLibrary));
    }
    if (!product.debugFile.empty()) {
        command.add("/DEBUG");
        command.add("/PDB:", inCommand(product.debugFile));
    }
    command.add({}, driver_.linkerOptions(entry));
    for (const char* variable : {"SUBSYSTEM", "ENTRY"}) {
        if (hasEntries(target_, variable)) {
            command.add(fmt::format("/{}:{}", variable, *target_.textOf(variable)));
        }
    }
    if (const std::string file = oneFile(paths_, "DEF_FILE"); !file.empty()) {
        command.add("/DEF:", inCommand(file));
        addInput(recipe, "DEF_FILE", file);
    }
    if (equalsIgnoringCase(target_.textOf("MANIFEST").value_or(""), "no")) {
        command.add("/MANIFEST:NO");
    } else if (const std::string file = oneFile(paths_, "MANIFEST"); !file.empty()) {
        command.add("/MANIFEST:EMBED");
        command.add("/MANIFESTINPUT:", inCommand(file));
        addInput(recipe, "MANIFEST", file);
    }
}

void MsvcBuild::addLibraries(CommandText& command, Recipe& recipe) const {
    const std::vector<std::string> names = libraryFiles(atLastPlace(entriesOf(target_, "LIBS")));
    const std::vector<std::string> directories = paths_.absolute(entriesOf(target_, "LIB_DIRS"));
    command.add({}, inCommand(libraries_));
    addFlags(command, target_, "LINK_FLAGS");
    command.add("/LIBPATH:", inCommand(directories));
    command.add({}, names);
    command.add({}, driver_.libraries());
    addInputs(recipe, "OBJECTS", objects_);
    addInputs(recipe, "RES_FILES", resources_);
    addInputs(recipe, "LIB_FILES", libraries_);
    addInputs(recipe, "LIBS", filesIn(directories, names, paths_.root()));
    addInputs(recipe, "LINK_FLAGS", flagFiles(target_, paths_, {"LINK_FLAGS"}));
}

/// Behind everything else, since anything may need them.
void MsvcBuild::addPackages(CommandText& command, Recipe& recipe) const {
    const PackageLibraries libraries = msvcLibraries(packages().link);
    std::vector<std::string> directories;
    for (const std::string& directory : libraries.directories) {
        directories.push_back(normalPath(directory, paths_.root()));
    }
    command.add("/LIBPATH:", inCommand(directories));
    for (const std::string& name : libraries.names) {
        command.add(isLibraryPath(name) ? inCommand(normalPath(name, paths_.root())) : name);
    }
    addInputs(recipe, "LIBS", filesIn(directories, libraries.names, paths_.root()));
}

void MsvcBuild::finishProduct(Recipe recipe, const CommandText& command, const Product& product) {
    if (type_ == OutputType::Static) {
        addInputs(recipe, "OBJECTS", objects_);
        recipe.oldOutputs = OldOutputs::Go;
    }
    const std::string stem = paths_.objectDirectory() + "/" + fileName(product.path);
    command.finish(recipe, platform::pathFromUtf8(stem), inCommand(stem));
    const auto output = [](const char* name, const std::string& path) {
        return resolvedAssignment(name, pathValue(path), AssignModifier::Output);
    };
    recipe.role = RecipeRole::Link;
    recipe.outputs.push_back(output("OUTPUT", product.linked));
    if (!product.importLibrary.empty()) {
        recipe.outputs.push_back(output("LIBRARY", product.importLibrary));
    }
    if (!product.debugFile.empty()) {
        recipe.outputs.push_back(output("PDB_FILE", product.debugFile));
        outputs.push_back(recipe.outputs.back());
    }
    outputs.push_back(output("OUTPUT", product.path));
    recipes.push_back(std::move(recipe));
    ++stage_;
    if (product.linked != product.path) {
        Recipe sign = copyRecipe(product.linked, product.path);
        signing_.addTo(sign, program(MsvcProgram::Signer), inCommand(product.path));
        recipes.push_back(std::move(sign));
        ++stage_;
    }
}

void MsvcBuild::addLibraryOutputs(const std::string& library) {
    std::vector<std::string> files;
    if (!library.empty()) {
        files.push_back(library);
        addOutput("LIBRARY", pathValue(library));
    }
    const bool linked = type_ == OutputType::Shared;
    if (!linked) {
        files.insert(files.end(), libraries_.begin(), libraries_.end());
    }
    exportAppend(outputs, "LIB_FILES", pathValues(files));
    if (!linked) {
        exportAppend(outputs, "LIBS", textValues(atLastPlace(entriesOf(target_, "LIBS"))));
        exportAppend(outputs, "LIB_DIRS",
                     pathValues(paths_.absolute(entriesOf(target_, "LIB_DIRS"))));
        exportAppend(outputs, "PACKAGES",
                     textValues(packagesNamed(entriesOf(target_, "PACKAGES"))));
    }
}

Recipe MsvcBuild::copyRecipe(const std::string& from, const std::string& to) const {
    Recipe recipe;
    recipe.stage = stage_;
    recipe.declaration = Declaration::Complete;
    recipe.command = copyCommand(paths_.inCommand(from), paths_.inCommand(to));
    addInput(recipe, "FILES", from);
    recipe.outputs.push_back(resolvedAssignment("FILES", pathValue(to), AssignModifier::Output));
    return recipe;
}

/// A directory with everything that belongs to the driver, and a catalogue of it.
void MsvcBuild::package(const std::string& product) {
    const std::string description = oneFile(paths_, "INF_FILE");
    const std::string directory = paths_.inOutputDirectory(outputNameOf(target_) + ".package");
    std::vector<std::string> files = {product, description};
    std::ranges::move(paths_.files("PACKAGE_FILES"), std::back_inserter(files));
    std::vector<std::string> packed;
    for (const std::string& file : files) {
        packed.push_back(directory + "/" + fileName(file));
        recipes.push_back(copyRecipe(file, packed.back()));
    }
    ++stage_;

    const std::string inf = fileName(description);
    const std::string named = target_.textOf("CAT_FILE").value_or("");
    const std::string catalogue =
        directory + "/" + (named.empty() ? inf.substr(0, inf.rfind('.')) + ".cat" : named);
    const std::string maker = program(MsvcProgram::CatalogueMaker);
    const std::string systems = target_.textOf("CAT_OS").value_or("");
    Recipe recipe = stageRecipe(maker);
    CommandText command(ResponseFiles::Windows);
    command.add(nativePath(maker));
    command.add("/driver:", nativePath(directory));
    command.add("/os:", systems.empty() ? catalogueSystem(*directories_.architecture) : systems);
    addFlags(command, target_, "INF2CAT_FLAGS");
    recipe.command = command.text();
    addInputs(recipe, "PACKAGE_FILES", packed);
    const Assignment output =
        resolvedAssignment("CAT_FILE", pathValue(catalogue), AssignModifier::Output);
    recipe.outputs.push_back(output);
    if (signing_.wanted()) {
        signing_.addTo(recipe, program(MsvcProgram::Signer), inCommand(catalogue));
    }
    recipe.oldOutputs = OldOutputs::Go;
    recipes.push_back(std::move(recipe));
    outputs.push_back(output);
}

}  // namespace Vesk
