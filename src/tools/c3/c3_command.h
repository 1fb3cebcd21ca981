// The command of the C3 compiler for one target.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/support/command_text.h"
#include "tools/support/output_type.h"
#include "tools/support/target_paths.h"

namespace Vesk {

/// The compiler's name for the machine of a triple: "linux-x64" for x86_64-linux-gnu. Its own words
/// are left as they are.
std::string c3TargetOf(std::string_view triple);

/// The option for what a user calls an optimisation: "2", "O2", "-O2", "s". Throws VeskException
/// for one that the compiler does not know.
std::string c3OptimisationOption(std::string_view level);

/// The file that a target makes, and the name from which the compiler derives it by adding a
/// suffix.
struct C3Product {
    std::string file;
    std::string givenName;
};

/// Throws VeskException for a name with a suffix that the compiler would not make.
C3Product c3Product(const std::string& outputName, OutputType type, std::string_view triple,
                    const TargetPaths& paths);

/// The files of a target and the places for its results.
struct C3Command {
    std::string compiler;
    std::vector<std::string> sources;
    std::vector<std::string> objects;    ///< linked with the sources
    std::vector<std::string> libraries;  ///< linked with the sources, too
    std::string ownTriple;               ///< the compiler's default
    std::string triple;                  ///< what the product is for
    OutputType type = OutputType::Executable;
    C3Product product;            ///< unused for objects
    std::string objectDirectory;  ///< used for objects only
};

CommandText c3CommandText(const C3Command& command, const TargetContext& target,
                          const TargetPaths& paths);

}  // namespace Vesk
