// The recipes of one target built with Microsoft's tools, and the resulting outputs.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "run/build_env.h"
#include "tools/msvc/driver_settings.h"
#include "tools/msvc/msvc_programs.h"
#include "tools/msvc/signing.h"
#include "tools/support/command_text.h"
#include "tools/support/output_type.h"
#include "tools/support/source_files.h"
#include "tools/support/target_paths.h"

namespace Vesk {

/// Message files first become headers and resource scripts. Then sources and scripts become objects
/// and resources. From these a product is made and signed. A driver's product becomes a package
/// with a catalogue.
class MsvcBuild {
  public:
    /// Everything passed by reference must outlive the build.
    MsvcBuild(TargetContext& target, const BuildEnv& environment, const DeclaredPlace& declared,
              MsvcPrograms& programs);

    void make();

    std::vector<Recipe> recipes;
    std::vector<Assignment> outputs;

  private:
    struct Product {
        std::string path;
        std::string linked;  ///< what the linker makes: the same, or a file that is then signed
        std::string importLibrary;
        std::string debugFile;
    };

    /// What the commands for all sources of a language have in common.
    struct Compiler {
        CommandText command;  ///< how they begin
        std::string program;
        std::shared_ptr<const HeaderSearch> headerSearch;
        std::vector<std::string> flagFiles;
    };

    // Compiling
    void compileMessages();
    void compile();
    Compiler compilerFor(Language language) const;
    void addDefinitionsAndDirectories(CommandText& command) const;
    Recipe compileRecipe(const SourceFile& source, const Compiler& compiler) const;
    void addDependencyReport(const SourceFile& source, const Compiler& compiler,
                             CommandText& command, Recipe& recipe) const;
    Recipe assembleRecipe(const SourceFile& source) const;
    void compileResources();
    Recipe resourceRecipe(const std::string& script, const std::string& result) const;

    // Linking
    void link();
    void archive();
    void addLinkOptions(CommandText& command, Recipe& recipe, const Product& product) const;
    void addLibraries(CommandText& command, Recipe& recipe) const;
    void addPackages(CommandText& command, Recipe& recipe) const;
    void finishProduct(Recipe recipe, const CommandText& command, const Product& product);
    void addLibraryOutputs(const std::string& library);
    Product productOf() const;
    std::string suffix() const;

    // Packages of drivers
    void package(const std::string& product);
    Recipe copyRecipe(const std::string& from, const std::string& to) const;

    std::string program(MsvcProgram program, const std::string& name = {}) const;
    PackageFlags packages() const;
    Recipe stageRecipe(const std::string& program) const;
    std::string inCommand(const std::string& path) const;
    std::vector<std::string> inCommand(const std::vector<std::string>& paths) const;
    bool says(const char* variable, bool otherwise) const;
    void addOutput(const char* name, const ValuePtr& value);

    TargetContext& target_;
    const TargetPaths paths_;
    MsvcPrograms& programs_;
    const std::string triple_;
    const DriverModel model_;
    const MsvcDirectories& directories_;
    const DriverSettings driver_;
    const Signing signing_;
    std::shared_ptr<const ToolEnvironment> toolEnvironment_;
    OutputType type_;
    std::uint32_t stage_ = 0;
    std::vector<SourceFile> sources_;
    std::vector<std::string> scripts_;  ///< resource scripts, including those from messages
    std::vector<std::string> messageDirectories_;  ///< where the results of message files are
    std::vector<std::string> headers_;             ///< the headers there
    std::vector<std::string> objects_;             ///< of the sources, then OBJ_FILES
    std::vector<std::string> resources_;
    std::vector<std::string> libraries_;
};

}  // namespace Vesk
