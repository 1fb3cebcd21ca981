// The matcher of a compiler.
#pragma once

#include <algorithm>
#include <iterator>
#include <memory>
#include <vector>

#include "tools/discovery/toolchain_match.h"
#include "tools/discovery/toolchain_programs.h"
#include "tools/matcher.h"

namespace Vesk {

/// Fits targets by `Toolchain::kTraits` and leaves everything else to the toolchain. A Toolchain is
/// copied with its matcher, so it must share what it remembers. It has
///
///     std::shared_ptr<Builder> builder(const Context& target, DeclaredPlace place) const;
///
/// and, if a declaration may leave something out, a static
///
///     AssignmentMap completed(const AssignmentMap& must, AssignmentMap others);
template <class Toolchain>
class ToolchainMatcher : public Matcher {
  public:
    /// Throws VeskException for a declaration without "toolchain_path".
    ToolchainMatcher(const CiString& name, const AssignmentMap& must, const AssignmentMap& others)
        : Matcher(name, Toolchain::kTraits.toolType, toolchainWants(), needs(), must,
                  completed(must, others)) {
        requireToolchainPath(*this, Toolchain::kTraits.matcherClass);
    }

    std::unique_ptr<Matcher> clone() const override {
        return std::make_unique<ToolchainMatcher>(*this);
    }

    std::shared_ptr<Builder> createBuilder(const Context& target) const override {
        return toolchain_.builder(target, declaredPlace(declaredSettings()));
    }

    std::vector<CiString> comparedNames() const override {
        std::vector<CiString> names = Matcher::comparedNames();
        std::ranges::move(toolchainSettings(), std::back_inserter(names));
        return names;
    }

  protected:
    MatchResult matchTool(const Context& target) const override {
        return matchToolchain(Toolchain::kTraits, declaredSettings(), target);
    }

  private:
    static AssignmentMap needs() {
        return Toolchain::kTraits.need.empty() ? AssignmentMap()
                                               : makeTable({{Toolchain::kTraits.need}});
    }

    static AssignmentMap completed(const AssignmentMap& must, const AssignmentMap& others) {
        if constexpr (requires { Toolchain::completed(must, others); }) {
            return Toolchain::completed(must, others);
        } else {
            return others;
        }
    }

    Toolchain toolchain_;
};

}  // namespace Vesk
