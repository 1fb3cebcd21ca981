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

    /// Adds those of all targets of the project that take no arguments: in silence, without those
    /// that cannot be visited, and whatever has been built of them.
    void addProject(const BuildSetting& setting, const Project& project);

    /// Text of JSON, with paths as UTF-8: the new entries, and behind them what the old text has of
    /// other output directories, those of other profiles, as long as the source exists.
    std::string textOver(const std::string& old) const;

    /// Writes the file in place of the old one. Throws VeskException when it cannot be written.
    void write(const std::string& path) const;

    /// The text of the file; empty if there is none.
    static std::string textAt(const std::string& path);

    /// Writes a text in place of that, unless it is the same. Throws as the other one does.
    static void write(const std::string& path, const std::string& text, const std::string& old);

  private:
    struct Entry {
        std::string directory;
        std::string command;
        std::string file;
        std::string output;
    };

    std::vector<Entry> entries_;
};

}  // namespace Vesk
