// Signing what a target makes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "run/recipe.h"
#include "tools/support/target_paths.h"

namespace Vesk {

/// What a target says about its signature. A password is never seen here: the command refers to the
/// environment variable that SIGN_PASSWORD_ENV names.
class Signing {
  public:
    /// Throws VeskException for settings that contradict one another, and for a password in the
    /// text of the target.
    Signing(const TargetContext& target, const TargetPaths& paths);

    /// Whether the target names a certificate.
    bool wanted() const noexcept { return !certificate_.empty(); }

    /// Has the recipe sign the file with the program when all that it does else is done. `file` is
    /// as commands name it.
    void addTo(Recipe& recipe, const std::string& program, const std::string& file) const;

  private:
    void useStore(const TargetContext& target);
    void useFile(const TargetContext& target, const TargetPaths& paths);

    std::vector<std::string> certificate_;  ///< the options that choose it
    std::vector<std::string> options_;
    std::string passwordVariable_;
    std::string file_;  ///< of the certificate, if it comes from one
};

}  // namespace Vesk
