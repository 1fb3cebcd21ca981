// The references to unknown variables that have been reported.
#pragma once

#include <cstddef>
#include <map>
#include <string>

namespace Vesk {

/// A variable may be evaluated any number of times before it is finally resolved, but each
/// reference in its text is reported only once.
class MissingVariables {
  public:
    void beginEvaluation(const std::string& variable);

    /// Whether the reference has not been reported yet. `place` is the variable, with the names of
    /// nested ones, and the reference: "x.lib.FLAGS".
    bool isNew(const std::string& place);

  private:
    struct Count {
        std::size_t seen = 0;  ///< in the current evaluation of the variable
        std::size_t reported = 0;
    };

    std::map<std::string, Count> counts_;  ///< by place
};

}  // namespace Vesk
