// Signs what a target makes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "run/recipe.h"
#include "tools/support/target_paths.h"

namespace Vesk {

/// A target's settings for its signature. A password never appears here: the command refers to the
/// environment variable that SIGN_PASSWORD_ENV names.
class Signing {
  public:
    /// Throws VeskException for contradictory settings, and for a password in the text of the
    /// target.
    Signing(const TargetContext& target, const TargetPaths& paths);

    /// Whether the target names a certificate.
    bool wanted() const noexcept { return !certificate_.empty(); }

    /// Makes the recipe sign the file with the program after everything else. `file` is in the form
    /// that commands use.
    void addTo(Recipe& recipe, const std::string& program, const std::string& file) const;

  private:
    void useStore(const TargetContext& target);
    void useFile(const TargetContext& target, const TargetPaths& paths);

    std::vector<std::string> certificate_;  ///< the options that choose it
    std::vector<std::string> options_;
    std::string passwordVariable_;
    std::string file_;  ///< of the certificate, if it is in a file
};

}  // namespace Vesk
