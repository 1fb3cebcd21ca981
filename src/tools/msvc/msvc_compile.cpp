// Compiling, and what all steps share.

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <optional>

#include "base/exception.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/system.h"
#include "tools/discovery/version.h"
#include "tools/msvc/msvc_build.h"
#include "tools/msvc/msvc_packages.h"
#include "tools/msvc/resource_script.h"
#include "tools/msvc/version_directories.h"
#include "tools/support/flag_files.h"
#include "tools/support/header_search.h"
#include "tools/support/libraries.h"
#include "tools/support/recipe_parts.h"
#include "tools/support/value_lists.h"
#include "types/context/context_value.h"

namespace Vesk {

namespace {

constexpr std::string_view kObjectSuffix = ".obj";

/// How a compiler reports which headers it has read.
enum class Report { Json, Makefile, Notes };

Report reportOf(const MsvcDirectories& directories) {
    if (directories.clang) {
        return Report::Makefile;
    }
    // That of Visual Studio 2019 16.7 and later ones know /sourceDependencies.
    const bool knowsJson =
        directories.version.empty() || compareVersions(directories.version, "14.27") >= 0;
    return knowsJson ? Report::Json : Report::Notes;
}

/// The suffix by which the cache knows the form.
const char* suffixOf(Report report) noexcept {
    return report == Report::Json ? ".json" : report == Report::Makefile ? ".d" : ".notes";
}

/// The option in front of a source whose name does not show its language.
const char* languageOption(const SourceFile& source) {
    const std::string_view extension = source.extension();
    if (source.language == Language::C) {
        return extension == ".c" ? "" : "/Tc";
    }
    return extension == ".cpp" || extension == ".cxx" ? "" : "/Tp";
}

std::string runtimeOption(const Context& target) {
    const std::string runtime = target.textOf("RUNTIME").value_or("");
    for (const char* known : {"MD", "MDd", "MT", "MTd"}) {
        if (runtime == known) {
            return "/" + runtime;
        }
    }
    throw VeskException(fmt::format("RUNTIME '{}' is not one of MD, MDd, MT, MTd.", runtime));
}

/// A variable that the target's ENV gives to its commands.
std::string environmentOf(const Context& target, std::string_view name) {
    const Assignment* variables = target.find("ENV");
    const auto* nested =
        variables != nullptr ? dynamic_cast<const VeskContext*>(variables->value.get()) : nullptr;
    return nested == nullptr ? std::string() : nested->context()->textOf(name).value_or("");
}

/// "INCLUDE=a;b". The target's own value comes last.
void addDirectories(std::vector<std::string>& variables, const Context& target,
                    const std::string& name, const std::vector<std::string>& directories) {
    std::string value;
    for (const std::string& directory : directories) {
        value.append(value.empty() ? "" : ";").append(nativePath(directory));
    }
    if (value.empty()) {
        return;
    }
    if (const std::string own = environmentOf(target, name); !own.empty()) {
        value.append(";").append(own);
    }
    variables.push_back(name + "=" + value);
}

std::vector<std::string> toolSetDirectories(const MsvcDirectories& directories,
                                            const std::string& part) {
    std::vector<std::string> found;
    if (!directories.toolSet.empty()) {
        found.push_back(directories.toolSet + "/" + part);
        if (std::string atl = directories.toolSet + "/atlmfc/" + part; isDirectory(atl)) {
            found.push_back(std::move(atl));
        }
    }
    return found;
}

std::shared_ptr<const ToolEnvironment> toolEnvironmentOf(const Context& target,
                                                         const MsvcDirectories& directories,
                                                         const DriverSettings& driver) {
    auto environment = std::make_shared<ToolEnvironment>();
    std::vector<std::string> include = toolSetDirectories(directories, "include");
    const std::vector<std::string> ofKit = driver.includeDirectories();
    // In the kernel the kit provides the C headers; those of the tool set are for applications.
    include.insert(driver.kernel() ? include.begin() : include.end(), ofKit.begin(), ofKit.end());
    addDirectories(environment->variables, target, "INCLUDE", include);

    const std::string machine(directories.architecture->directory);
    std::vector<std::string> libraries = toolSetDirectories(directories, "lib/" + machine);
    std::ranges::move(driver.libraryDirectories(), std::back_inserter(libraries));
    addDirectories(environment->variables, target, "LIB", libraries);

    for (const std::string& directory : {directories.toolSet, directories.kit.directory}) {
        if (!directory.empty()) {
            environment->systemDirectories.push_back(directory);
        }
    }
    return environment;
}

/// Variables in which these programs look for further options.
void addOptionVariables(Recipe& recipe, std::initializer_list<const char*> names) {
    for (const char* name : names) {
        if (const auto value = platform::environmentVariable(name); value && !value->empty()) {
            recipe.inputs.push_back({textAssignment(name, *value), std::nullopt});
        }
    }
}

OutputType typeOf(const Context& target) {
    const bool onlyResources = !hasSources(target) && !hasEntries(target, "OBJ_FILES") &&
                               !hasEntries(target, "OUTPUT_TYPE");
    const OutputType type = onlyResources ? OutputType::Object : outputTypeOf(target);
    if (type == OutputType::Relocatable) {
        throw VeskException(
            "OUTPUT_TYPE 'relocatable' is not for MSVC, whose linker does not combine "
            "objects. A static library holds several.");
    }
    if (hasEntries(target, "LINKER_SCRIPT")) {
        throw VeskException(
            "LINKER_SCRIPT is not for MSVC, whose linker takes no scripts. "
            "DEF_FILE and LINK_FLAGS are.");
    }
    return type;
}

std::string stemOf(const std::string& path) {
    const std::string file = path.substr(path.rfind('/') + 1);
    return file.substr(0, file.rfind('.'));
}

}  // namespace

MsvcBuild::MsvcBuild(TargetContext& target, const BuildEnv& environment,
                     const DeclaredPlace& declared, MsvcPrograms& programs)
    : target_(target),
      paths_(target, environment),
      programs_(programs),
      triple_(declared.triple),
      model_(driverModelOf(target)),
      directories_(programs.directories(declared, target, model_ != DriverModel::None)),
      driver_(target, model_, directories_),
      signing_(target, paths_),
      toolEnvironment_(toolEnvironmentOf(target, directories_, driver_)),
      type_(typeOf(target)),
      libraries_(atLastPlace(paths_.files("LIB_FILES"))) {}

void MsvcBuild::make() {
    compileMessages();
    compile();
    compileResources();
    addOutput("OBJECTS", pathValues(objects_));
    std::ranges::move(atLastPlace(paths_.files("OBJ_FILES")), std::back_inserter(objects_));
    stage_ += recipes.empty() ? 0 : 1;
    switch (type_) {
        case OutputType::Object: {
            std::vector<std::string> all = objects_;
            all.insert(all.end(), resources_.begin(), resources_.end());
            exportAppend(outputs, "OBJ_FILES", pathValues(all));
            addLibraryOutputs({});
            break;
        }
        case OutputType::Static:
            archive();
            break;
        default:
            link();
    }
}

std::string MsvcBuild::program(MsvcProgram program, const std::string& name) const {
    return programs_.require(directories_, program, name);
}

PackageFlags MsvcBuild::packages() const {
    const std::vector<std::string> packages = packagesNamed(entriesOf(target_, "PACKAGES"));
    if (packages.empty()) {
        return {};
    }
    const std::string runtime = target_.textOf("RUNTIME").value_or("");
    const bool isStatic = equalsIgnoringCase(runtime.substr(0, 2), "MT");
    return programs_.packages(directories_, triple_, packages,
                              isStatic ? LinkKind::Static : LinkKind::Shared);
}

// These programs take a word that begins with a slash for an option.
std::string MsvcBuild::inCommand(const std::string& path) const {
    std::string name = paths_.inCommand(path);
    return name.starts_with('/') ? relativePath(name, paths_.root()) : name;
}

std::vector<std::string> MsvcBuild::inCommand(const std::vector<std::string>& paths) const {
    std::vector<std::string> names;
    names.reserve(paths.size());
    for (const std::string& path : paths) {
        names.push_back(inCommand(path));
    }
    return names;
}

bool MsvcBuild::says(const char* variable, bool otherwise) const {
    const std::string word = target_.textOf(variable).value_or("");
    if (word.empty()) {
        return otherwise;
    }
    const bool yes = equalsIgnoringCase(word, "yes");
    if (!yes && !equalsIgnoringCase(word, "no")) {
        throw VeskException(fmt::format("{} '{}' is neither yes nor no.", variable, word));
    }
    return yes;
}

void MsvcBuild::addOutput(const char* name, const ValuePtr& value) {
    outputs.push_back(resolvedAssignment(name, value, AssignModifier::Output));
}

Recipe MsvcBuild::stageRecipe(const std::string& program) const {
    Recipe recipe;
    recipe.stage = stage_;
    recipe.toolEnvironment = toolEnvironment_;
    recipe.searchDirectories.push_back(platform::pathFromUtf8(directories_.bin).make_preferred());
    for (const std::string& directory : directories_.kitBins) {
        recipe.searchDirectories.push_back(platform::pathFromUtf8(directory).make_preferred());
    }
    addInput(recipe, "program", program);
    return recipe;
}

void MsvcBuild::compileMessages() {
    for (const std::string& file : paths_.files("MC_FILES")) {
        const std::string compiler = program(MsvcProgram::MessageCompiler);
        const std::string directory = paths_.objectStem(file) + ".gen";
        const std::string name = directory + "/" + stemOf(file);
        CommandText command(ResponseFiles::Windows);
        command.add(nativePath(compiler));
        addFlags(command, target_, "MC_FLAGS");
        for (const char* option : {"-h", "-r"}) {
            command.add(option);
            command.add(inCommand(directory));
        }
        command.add(inCommand(file));
        Recipe recipe = stageRecipe(compiler);
        recipe.command = command.text();
        addInput(recipe, "MC_FILES", file);
        recipe.declaration = Declaration::Complete;
        for (const char* suffix : {".h", ".rc"}) {
            recipe.outputs.push_back(
                resolvedAssignment("MC_HEADERS", pathValue(name + suffix), AssignModifier::Output));
        }
        recipes.push_back(std::move(recipe));
        messageDirectories_.push_back(directory);
        headers_.push_back(name + ".h");
        scripts_.push_back(name + ".rc");
    }
    if (headers_.empty()) {
        return;
    }
    ++stage_;
    addOutput("MC_HEADERS", pathValues(headers_));
    const Assignment* own = target_.find("INCLUDE_DIRS");
    if (own == nullptr || own->modifier != AssignModifier::Output) {
        exportAppend(outputs, "INCLUDE_DIRS", pathValues(messageDirectories_));
    }
}

void MsvcBuild::compile() {
    sources_ = sourceFiles(target_, paths_, kObjectSuffix);
    std::array<std::optional<Compiler>, std::size(kLanguages)> compilers;
    std::vector<std::string> reports;
    recipes.reserve(recipes.size() + sources_.size() + 1);
    for (SourceFile& source : sources_) {
        objects_.push_back(source.object);
        if (source.language == Language::Assembler) {
            recipes.push_back(assembleRecipe(source));
            continue;
        }
        source.dependencyFile =
            source.object.substr(0, source.object.size() - kObjectSuffix.size()) +
            suffixOf(reportOf(directories_));
        reports.push_back(source.dependencyFile);
        auto& compiler = compilers[static_cast<std::size_t>(source.language)];
        if (!compiler) {
            compiler = compilerFor(source.language);
        }
        recipes.push_back(compileRecipe(source, *compiler));
    }
    addOutput("DEPFILES", pathValues(reports));
}

MsvcBuild::Compiler MsvcBuild::compilerFor(Language language) const {
    const std::vector<std::string> ofPackages = msvcCompileWords(packages().compile);
    Compiler compiler = {
        CommandText(ResponseFiles::Windows), program(MsvcProgram::Compiler),
        headerSearch(target_, paths_, {"FLAGS", flagsVariable(language)}, ofPackages),
        flagFiles(target_, paths_, {"FLAGS", flagsVariable(language)})};
    CommandText& command = compiler.command;
    addFlags(command, target_, "LAUNCHER");
    command.add(nativePath(compiler.program));
    command.add("/nologo");
    command.allowResponseFile();
    if (directories_.clang) {
        command.add("--target=", directories_.architecture->triple);
    }
    // Without times in objects, code that compiles to the same bytes gives the same object.
    if (says("REPRODUCIBLE", true)) {
        command.add("/Brepro");
    }
    command.add({}, driver_.compilerOptions());
    if (language == Language::Cpp && !driver_.kernel()) {
        command.add("/EHsc");
    }
    if (hasEntries(target_, "RUNTIME")) {
        command.add(runtimeOption(target_));
    }
    // Debug information goes into the objects: all compilers would write to a shared file at once.
    if (says("PDB", false)) {
        command.add("/Z7");
    }
    addFlags(command, target_, "FLAGS");
    addFlags(command, target_, flagsVariable(language));
    addDefinitionsAndDirectories(command);
    const std::vector<std::string> system =
        inCommand(paths_.absolute(entriesOf(target_, "SYSTEM_INCLUDE_DIRS")));
    if (!system.empty() && !directories_.clang) {
        command.add("/external:W0");
    }
    for (const std::string& directory : system) {
        command.add(directories_.clang ? "/imsvc" : "/external:I");
        command.add(directory);
    }
    command.add({}, ofPackages);
    return compiler;
}

void MsvcBuild::addDefinitionsAndDirectories(CommandText& command) const {
    command.add("/D", driver_.definitions());
    command.add("/D", entriesOf(target_, "DEFINES"));
    command.add("/I", inCommand(paths_.absolute(entriesOf(target_, "INCLUDE_DIRS"))));
    command.add("/I", inCommand(messageDirectories_));
}

Recipe MsvcBuild::compileRecipe(const SourceFile& source, const Compiler& compiler) const {
    Recipe recipe = stageRecipe(compiler.program);
    CommandText command = compiler.command;
    addDependencyReport(source, compiler, command, recipe);
    command.add("/c");
    command.add("/Fo", inCommand(source.object));
    command.add(languageOption(source), inCommand(source.path));
    command.finish(recipe, platform::pathFromUtf8(source.object), inCommand(source.object));

    const ValuePtr object = pathValue(source.object);
    recipe.inputs.push_back(
        {resolvedAssignment(filesVariable(source.language), pathValue(source.path)),
         resolvedAssignment("OBJECTS", object)});
    // Until the first report nobody knows which sources read them.
    addInputs(recipe, "MC_HEADERS", headers_);
    addInputs(recipe, "FLAGS", compiler.flagFiles);
    addOptionVariables(recipe, {"CL", "_CL_"});
    recipe.headerSearch = compiler.headerSearch;
    recipe.outputs.push_back(resolvedAssignment("OBJECTS", object, AssignModifier::Output));
    recipe.role = RecipeRole::Compile;
    recipe.start = Start::Queued;
    return recipe;
}

/// Compilers without reports of their own write these lines among their messages, where nobody
/// could read them. So they read the source once more, for these lines alone.
void MsvcBuild::addDependencyReport(const SourceFile& source, const Compiler& compiler,
                                    CommandText& command, Recipe& recipe) const {
    const std::string file = inCommand(source.dependencyFile);
    recipe.dependencyFile = platform::pathFromUtf8(source.dependencyFile);
    switch (reportOf(directories_)) {
        case Report::Json:
            command.add("/sourceDependencies");
            command.add(file);
            return;
        case Report::Makefile:
            command.add("/clang:-MMD");
            command.add("/clang:-MF", file);
            return;
        case Report::Notes:
            break;
    }
    CommandText notes = compiler.command;
    for (const char* option : {"/w", "/Zs", "/showIncludes"}) {
        notes.add(option);
    }
    notes.add(languageOption(source), inCommand(source.path));
    Recipe further;
    notes.finish(further, recipe.dependencyFile, file);
    recipe.furtherCommands.push_back(further.command + " >" + quoteForHost(nativePath(file)));
    std::ranges::move(further.supportFiles, std::back_inserter(recipe.supportFiles));
}

Recipe MsvcBuild::assembleRecipe(const SourceFile& source) const {
    const std::string assembler = program(MsvcProgram::Assembler);
    Recipe recipe = stageRecipe(assembler);
    CommandText command(ResponseFiles::Windows);
    command.add(nativePath(assembler));
    if (directories_.architecture->directory == "arm64") {
        command.add("-nologo");
        addFlags(command, target_, "ASM_FLAGS");
        command.add("-o");
        command.add(inCommand(source.object));
    } else {
        command.add("/nologo");
        command.add("/c");
        addFlags(command, target_, "ASM_FLAGS");
        addDefinitionsAndDirectories(command);
        command.add("/Fo", inCommand(source.object));
    }
    command.add(inCommand(source.path));
    recipe.command = command.text();
    addInput(recipe, "ASM_FILES", source.path);
    addOptionVariables(recipe, {"ML"});
    recipe.outputs.push_back(
        resolvedAssignment("OBJECTS", pathValue(source.object), AssignModifier::Output));
    recipe.role = RecipeRole::Compile;
    recipe.start = Start::Queued;
    return recipe;
}

void MsvcBuild::compileResources() {
    const std::size_t made = scripts_.size();
    std::ranges::move(paths_.files("RC_FILES"), std::back_inserter(scripts_));
    const std::vector<std::string> messages = paths_.files("MC_FILES");
    const std::vector<std::string> directories =
        paths_.absolute(entriesOf(target_, "INCLUDE_DIRS"));
    for (std::size_t i = 0; i < scripts_.size(); ++i) {
        const std::string& script = scripts_[i];
        // The resource of a script made from messages already lies among the objects.
        const std::string result =
            (i < made ? script.substr(0, script.rfind('.')) : paths_.objectStem(script)) + ".res";
        Recipe recipe = resourceRecipe(script, result);
        if (i < made) {
            addInput(recipe, "MC_FILES", messages[i]);
        } else {
            addInputs(recipe, "RC_FILES", filesOfResourceScript(script, directories));
            addInputs(recipe, "MC_HEADERS", headers_);
        }
        recipes.push_back(std::move(recipe));
        resources_.push_back(result);
    }
    if (!resources_.empty()) {
        addOutput("RES_FILES", pathValues(resources_));
    }
}

Recipe MsvcBuild::resourceRecipe(const std::string& script, const std::string& result) const {
    const std::string compiler = program(MsvcProgram::ResourceCompiler);
    Recipe recipe = stageRecipe(compiler);
    CommandText command(ResponseFiles::Windows);
    command.add(nativePath(compiler));
    command.add("/nologo");
    addFlags(command, target_, "RC_FLAGS");
    addDefinitionsAndDirectories(command);
    command.add("/fo");
    command.add(inCommand(result));
    command.add(inCommand(script));
    recipe.command = command.text();
    addInput(recipe, "RC_FILES", script);
    recipe.declaration = Declaration::Complete;
    recipe.outputs.push_back(
        resolvedAssignment("RES_FILES", pathValue(result), AssignModifier::Output));
    recipe.role = RecipeRole::Compile;
    recipe.start = Start::Queued;
    return recipe;
}

}  // namespace Vesk
