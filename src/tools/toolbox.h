// A set of tools from which the best one for a target is chosen.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <set>

#include "tools/matcher.h"

namespace Vesk {

/// The best tool of a box for a target.
struct Selection {
    const Matcher* matcher = nullptr;  ///< owned by the toolbox; null: no tool can build the target
    std::int32_t score = 0;
    MatchResult result;
};

class Toolbox {
  public:
    /// Adds the tool. Returns 0 for a new name, 1 if it replaced the tool of that name. Throws
    /// std::invalid_argument for null.
    int add(std::unique_ptr<Matcher> matcher);

    /// The tool with the highest score among those that can build the target; of equals, the first
    /// by name.
    Selection select(const Context& target, const MatchWeights& weights = {}) const;

    /// The variables of a target whose values some tool of the box compares. They must be resolved
    /// before `select`.
    const std::set<CiString, CiLess>& comparedNames() const noexcept { return comparedNames_; }

    /// Null if there is none.
    const Matcher* find(std::string_view name) const;

    std::size_t size() const noexcept { return matchers_.size(); }

    /// In the order of their names.
    std::vector<const Matcher*> tools() const;

  private:
    void collectComparedNames(const Matcher& matcher);

    std::map<CiString, std::unique_ptr<Matcher>, CiLess> matchers_;
    std::set<CiString, CiLess> comparedNames_;
};

/// The better of two selections. A declared tool wins against a static one with the same score.
const Selection& betterOf(const Selection& fromStatic, const Selection& fromDeclared) noexcept;

}  // namespace Vesk
