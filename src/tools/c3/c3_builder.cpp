#include "tools/c3/c3_builder.h"

#include <fmt/format.h>
#include <iterator>
#include <utility>

#include "base/exception.h"
#include "platform/files.h"
#include "tools/c3/c3_command.h"
#include "tools/c3/c3_variables.h"
#include "tools/discovery/triple.h"
#include "tools/support/file_patterns.h"
#include "tools/support/flag_files.h"
#include "tools/support/libraries.h"
#include "tools/support/source_files.h"
#include "tools/support/value_lists.h"
#include "types/values/list_value.h"
#include "types/values/string_values.h"

namespace Vesk {

namespace {

std::string objectDirectoryOf(const TargetPaths& paths) {
    return paths.objectDirectory() + "/objects";
}

Assignment output(const char* name, ValuePtr value) {
    return resolvedAssignment(name, std::move(value), AssignModifier::Output);
}

/// An output that dependants with "+" append to their own variable.
Assignment handedOn(const char* name, ValuePtr value) {
    Assignment assignment = output(name, std::move(value));
    assignment.op = AssignOperator::Append;
    return assignment;
}

ValuePtr textValues(std::vector<std::string> texts) {
    auto list = std::make_shared<VeskList>();
    for (std::string& text : texts) {
        list->items.push_back(std::make_shared<VeskRawString>(std::move(text)));
    }
    return list;
}

void addInputs(Recipe& recipe, const char* name, const std::vector<std::string>& paths) {
    for (const std::string& path : paths) {
        recipe.inputs.push_back({resolvedAssignment(name, pathValue(path)), std::nullopt});
    }
}

/// Those of the C3 libraries that lie in one of the directories. The compiler has the others built
/// in.
std::vector<std::string> c3Libraries(const std::vector<std::string>& directories,
                                     const std::vector<std::string>& names) {
    std::vector<std::string> found;
    for (const std::string& name : names) {
        for (const std::string& directory : directories) {
            const std::string path = directory + "/" + name + ".c3l";
            if (platform::fileStatus(platform::pathFromUtf8(path))) {
                found.push_back(path);
                break;
            }
        }
    }
    return found;
}

/// One target being built.
class C3Recipe {
  public:
    C3Recipe(const TargetContext& target, const BuildEnv& environment)
        : target_(target), paths_(target, environment) {}

    void make(std::string compiler, const std::string& nativeTriple) {
        command_.compiler = std::move(compiler);
        command_.ownTriple = nativeTriple;
        command_.triple = target_.textOf("C3_TARGET").value_or("");
        for (const std::string& other :
             {target_.textOf("TARGET_TRIPLE").value_or(""), nativeTriple}) {
            command_.triple = command_.triple.empty() ? other : command_.triple;
        }
        takeFiles();
        if (command_.type == OutputType::Object) {
            makeObjects();
        } else {
            makeProduct();
        }
    }

    std::vector<Recipe> recipes;
    std::vector<Assignment> outputs;

  private:
    void takeFiles() {
        if (hasSources(target_)) {
            throw VeskException(
                "C3_FILES and sources of other languages cannot be built in one target. Put the "
                "others into a target of their own, OUTPUT_TYPE = \"static\" or \"object\", and "
                "depend on it with \"+\".");
        }
        command_.type = outputTypeOf(target_);
        if (command_.type == OutputType::Relocatable) {
            throw VeskException(
                "The C3 compiler makes no relocatable objects. OUTPUT_TYPE can be "
                "executable, static, shared or object.");
        }
        command_.sources = paths_.files("C3_FILES");
        if (command_.sources.empty()) {
            throw VeskException("C3_FILES names no file.");
        }
        command_.objects = atLastPlace(paths_.files("OBJ_FILES"));
        command_.libraries = atLastPlace(paths_.files("LIB_FILES"));
    }

    Recipe newRecipe() {
        Recipe recipe;
        recipe.command = c3CommandText(command_, target_, paths_).text();
        recipe.workingDirectory = platform::pathFromUtf8(paths_.root());
        addInputs(recipe, "C3_FILES", command_.sources);
        addInputs(recipe, "program", {command_.compiler});
        addInputs(recipe, "C3_LIBS",
                  c3Libraries(paths_.absolute(entriesOf(target_, "C3_LIB_DIRS")),
                              entriesOf(target_, "C3_LIBS")));
        return recipe;
    }

    void makeObjects() {
        command_.objectDirectory = objectDirectoryOf(paths_);
        Recipe recipe = newRecipe();
        recipe.outputs.push_back(output("objects", pathValue(command_.objectDirectory)));
        recipe.outputDirectory = platform::pathFromUtf8(command_.objectDirectory);
        recipe.oldOutputs = OldOutputs::Go;  // otherwise the objects of removed modules would stay
        recipes.push_back(std::move(recipe));
    }

    void makeProduct() {
        std::string name = target_.textOf("OUTPUT_NAME").value_or("");
        if (name.empty()) {
            name = target_.target().name;
        }
        command_.product = c3Product(name, command_.type, command_.triple, paths_);
        Recipe recipe = newRecipe();
        recipe.oldOutputs = OldOutputs::Go;
        addInputs(recipe, "OBJ_FILES", command_.objects);
        addInputs(recipe, "LIB_FILES", command_.libraries);
        addInputs(recipe, "LIBS",
                  librariesIn(paths_.absolute(entriesOf(target_, "LIB_DIRS")),
                              entriesOf(target_, "LIBS"), paths_.root()));
        addInputs(recipe, "LINK_FLAGS", flagFiles(target_, paths_, {"LINK_FLAGS"}));
        const Assignment product = output("OUTPUT", pathValue(command_.product.file));
        recipe.outputs.push_back(product);
        outputs.push_back(product);
        recipes.push_back(std::move(recipe));
        if (command_.type != OutputType::Executable) {
            addLibraryOutputs();
        }
    }

    /// What dependants need to link with the library. The compiler puts no foreign objects into a
    /// static library, so they are passed on with it.
    void addLibraryOutputs() {
        const bool isShared = command_.type == OutputType::Shared;
        std::string library = command_.product.file;
        if (isShared && isWindowsTriple(command_.triple)) {
            library = command_.product.givenName + ".lib";
        }
        outputs.push_back(output("LIBRARY", pathValue(library)));
        std::vector<std::string> files = {library};
        for (const std::string& each : command_.libraries) {
            if (!isShared || isSharedLibrary(each)) {
                files.push_back(each);
            }
        }
        outputs.push_back(handedOn("LIB_FILES", pathValues(files)));
        if (isShared) {
            return;
        }
        const auto handOn = [this](const char* name, ValuePtr value) {
            if (hasEntries(target_, name)) {
                outputs.push_back(handedOn(name, std::move(value)));
            }
        };
        handOn("OBJ_FILES", pathValues(command_.objects));
        handOn("LIBS", textValues(atLastPlace(entriesOf(target_, "LIBS"))));
        handOn("LIB_DIRS", pathValues(paths_.absolute(entriesOf(target_, "LIB_DIRS"))));
        if (hasEntries(target_, "LINK_LANGUAGE")) {
            outputs.push_back(output("LINK_LANGUAGE", std::make_shared<VeskRawString>(
                                                          *target_.textOf("LINK_LANGUAGE"))));
        }
    }

    const TargetContext& target_;
    TargetPaths paths_;
    C3Command command_;
};

}  // namespace

C3Builder::C3Builder(DeclaredPlace place, std::shared_ptr<ToolchainPrograms> programs)
    : CBuilder("c3c", c3Subjects()), place_(std::move(place)), programs_(std::move(programs)) {}

CBuilder::Created C3Builder::doCreateRecipes(TargetContext& target,
                                             const BuildEnv& environment) const {
    C3Recipe made(target, environment);
    made.make(programs_->require(programs_->place(place_, target), {"c3c"}), place_.triple);
    return {std::move(made.recipes), std::move(made.outputs)};
}

Overlap C3Builder::overlap(const TargetContext& target) const {
    return outputTypeOf(target) == OutputType::Object ? Overlap::Never : Overlap::Always;
}

std::shared_ptr<Context> C3Builder::complete(TargetContext& target, int exitCode) {
    auto results = CBuilder::complete(target, exitCode);
    if (outputTypeOf(target) != OutputType::Object) {
        return results;
    }
    const TargetPaths paths(target, BuildEnv(environmentSettings(target)));
    std::vector<std::string> objects;
    for (const char* suffix : {"/*.o", "/*.obj"}) {
        std::ranges::move(filesMatching(objectDirectoryOf(paths) + suffix, {}),
                          std::back_inserter(objects));
    }
    results->addAssignment(output("OBJECTS", pathValues(objects)), ModifierMode::Copy);
    std::ranges::move(atLastPlace(paths.files("OBJ_FILES")), std::back_inserter(objects));
    results->addAssignment(handedOn("OBJ_FILES", pathValues(objects)), ModifierMode::Copy);
    return results;
}

}  // namespace Vesk
