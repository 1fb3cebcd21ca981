// Installed libraries that pkg-config knows.
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
    Static,  ///< including everything that the libraries need in turn
};

/// The packages that PACKAGES asks for, each once: "name" or "name >= 1.2", with any of the
/// comparisons =, !=, <, <=, >, >=. Throws VeskException for a text that is not a package.
std::vector<std::string> packagesNamed(const std::vector<std::string>& entries);

/// Asks pkg-config and remembers the answers for the whole run. It also looks at everything that an
/// answer depends on (environment variables, the program, the .pc files and the places where others
/// would be found first), so that a run with the answer can be repeated. Used on the driver's
/// thread only.
class PkgConfig {
  public:
    /// `program`: the path of a pkg-config; `packages`: from packagesNamed. Throws VeskException
    /// for a missing package, with what pkg-config says.
    const PackageFlags& flags(const std::string& program, const std::vector<std::string>& packages,
                              LinkKind kind);

  private:
    const std::vector<std::string>& directoriesOf(const std::string& program);

    platform::Remembered<std::vector<std::string>> directories_;  ///< by program
    platform::Remembered<PackageFlags> answers_;                  ///< by everything that was asked
};

/// Splits pkg-config's answer into words as a POSIX shell does, without expansions.
std::vector<std::string> wordsOfAnswer(std::string_view answer);

/// The names in Requires and Requires.private of a .pc file, with duplicates. A name that contains
/// a variable is left as it is written.
std::vector<std::string> packagesRequired(std::string_view pcFile);

}  // namespace Vesk
