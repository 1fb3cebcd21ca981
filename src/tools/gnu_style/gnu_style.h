// Compilers whose command lines look like GCC's.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "run/build_env.h"
#include "tools/gnu_style/gnu_toolchain.h"
#include "tools/support/command_text.h"
#include "tools/support/output_type.h"
#include "tools/support/source_files.h"
#include "tools/support/target_paths.h"

namespace Vesk {

/// The recipes of one target, and the resulting outputs.
class GnuStyleBuild {
  public:
    /// Everything passed by reference must outlive the build.
    GnuStyleBuild(const TargetContext& target, const BuildEnv& environment, const GnuStyle& style);

    /// Compiles the sources and makes what OUTPUT_TYPE says. `driver` links if the objects alone do
    /// not show that they need C++.
    void make(Language driver);

    /// Copies and changes OBJCOPY_INPUT.
    void copyObject();

    std::vector<Recipe> recipes;
    std::vector<Assignment> outputs;

  private:
    struct Product {
        std::string path;
        std::string name;  ///< in the form that commands use
        std::string importLibrary;
    };

    /// What the commands for all sources of a language have in common.
    struct Compiler {
        CommandText command;  ///< how they begin
        Assignment program;
        std::shared_ptr<const HeaderSearch> headerSearch;
        std::vector<std::string> flagFiles;
    };

    void compile();
    Compiler compilerFor(Language language) const;
    Recipe compileRecipe(const SourceFile& source, const Compiler& compiler) const;

    void link();
    void linkByHand();
    void archive();
    void addSharedOptions(CommandText& command, const Product& product) const;
    void addRunPaths(CommandText& command, const Product& product) const;
    void addLibraries(CommandText& command, Recipe& recipe) const;
    void addPackages(CommandText& command, Recipe& recipe) const;
    void addScript(CommandText& command, Recipe& recipe) const;
    Recipe productRecipe(const Product& product, const std::string& program) const;
    void finishProduct(Recipe recipe, const CommandText& command, const Product& product);
    bool linksCpp() const;

    Product productOf() const;
    void addCommonOutputs();
    void addLibraryOutputs(const Product& product);

    const TargetContext& target_;
    const GnuStyle& style_;
    TargetPaths paths_;
    OutputType type_;
    Language driver_ = Language::C;
    std::vector<SourceFile> sources_;
    std::vector<std::string> objects_;    ///< of the sources, then OBJ_FILES
    std::vector<std::string> libraries_;  ///< LIB_FILES, in link order
};

}  // namespace Vesk
