// The compilation database, from which editors learn how each source is compiled.
#pragma once

#include <string>
#include <vector>

#include "driver/build_setting.h"
#include "run/recipe.h"

namespace Vesk {

class CompileCommands {
  public:
    /// Adds those of a target's recipes that make an object of a source.
    void add(const std::vector<Recipe>& recipes);

    /// Adds those of all targets of the project that take no arguments, as a dry run finds them: in
    /// silence, and without those that cannot be visited.
    void addProject(const BuildSetting& setting, const Project& project);

    /// Writes the file, with paths as UTF-8, unless it holds the same already. What it has of other
    /// output directories, those of other profiles, stays behind the new entries as long as the
    /// source exists. Throws VeskException when it cannot be written.
    void write(const std::string& path) const;

  private:
    struct Entry {
        std::string directory;
        std::string command;
        std::string file;
        std::string output;
    };

    /// Text of JSON: the new entries, then what stays of the old text.
    std::string mergedWith(const std::string& old) const;

    std::vector<Entry> entries_;
};

/// "NAME" of a project's profile: the file that every build of the project keeps current, from the
/// project's root. Empty when there is none.
std::string compilationDatabaseOf(const ProjectCatalog& catalog, const Project& project);

}  // namespace Vesk
