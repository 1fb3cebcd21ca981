// The compilation database, from which editors learn how each source is compiled.
#pragma once

#include <string>
#include <vector>

#include "run/recipe.h"

namespace Vesk {

class CompileCommands {
  public:
    /// Adds those of a target's recipes that make an object of a source.
    void add(const std::vector<Recipe>& recipes);

    /// Replaces the file, with paths as UTF-8. Throws VeskException when it cannot be written.
    void write(const std::string& path) const;

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
