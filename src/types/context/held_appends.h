// Appends of a context that wait until references resolve.
#pragma once

#include <string_view>
#include <utility>
#include <vector>

#include "types/context/assignment.h"

namespace Vesk {

struct HeldAppend {
    Assignment assignment;
    ModifierMode mode;
};

/// Kept in the order in which they will be made.
class HeldAppends {
  public:
    void add(HeldAppend held) { held_.push_back(std::move(held)); }
    bool has(std::string_view name) const;
    void drop(std::string_view name);
    std::vector<HeldAppend> takeAll() { return std::exchange(held_, {}); }
    const std::vector<HeldAppend>& all() const noexcept { return held_; }

  private:
    std::vector<HeldAppend> held_;
};

}  // namespace Vesk
