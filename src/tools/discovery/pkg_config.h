// Installed libraries that pkg-config knows: how to compile and link with them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/remembered.h"

namespace Vesk {

/// Arguments for the compiler, unquoted.
struct PackageFlags {
    std::vector<std::string> compile;
    std::vector<std::string> link;
};

enum class LinkKind {
    Shared,
    Static,  ///< with all that the libraries need in turn
};

/// What PACKAGES asks for, each "name" or "name >= 1.2", with any of the comparisons =, !=, <, <=,
/// >, >=, and each once. Throws VeskException for what is no package.
std::vector<std::string> packagesNamed(const std::vector<std::string>& entries);

/// Asks pkg-config, and remembers the answers for the whole run. What an answer depends on (the
/// variables of the environment, the program, the .pc files and the places where others would be
/// found first) is looked at as well, so that a run with it can be repeated. Used on the driver's
/// thread only.
class PkgConfig {
  public:
    /// `program`: the path of a pkg-config; `packages`: of packagesNamed. Throws VeskException for
    /// a package that is not there, with what pkg-config says.
    const PackageFlags& flags(const std::string& program, const std::vector<std::string>& packages,
                              LinkKind kind);

  private:
    const std::vector<std::string>& directoriesOf(const std::string& program);

    platform::Remembered<std::vector<std::string>> directories_;  ///< by program
    platform::Remembered<PackageFlags> answers_;                  ///< by all that was asked
};

/// The words of pkg-config's answer: as a POSIX shell splits it, without expansions.
std::vector<std::string> wordsOfAnswer(std::string_view answer);

/// The names in Requires and Requires.private of a .pc file, with duplicates. One that a variable
/// stands in is left as it is written.
std::vector<std::string> packagesRequired(std::string_view pcFile);

}  // namespace Vesk
