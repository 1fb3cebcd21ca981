// What the cache must not show to whoever reads its file.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "types/context/context.h"

namespace Vesk {

/// Values given on the command line or in a target's ENV are often passwords and the like. A text
/// in which one of them stands is kept as its hash: it can be compared then, but not read.
class HiddenValues {
  public:
    /// The texts of all values in the context, those in lists and contexts in it as well.
    void add(const Context& context);
    void add(const VeskValue* value);

    /// The assignment as it may be kept.
    Assignment masked(const Assignment& assignment) const;
    std::string masked(std::string text) const;

    /// The text with "***" in the place of each of them.
    std::string covered(std::string text) const;

    /// Whether one of the texts stands in this one.
    bool showIn(std::string_view text) const;

  private:
    bool showIn(const VeskValue* value) const;

    std::vector<std::string> texts_;
};

}  // namespace Vesk
