// Tools from the side that chooses among them.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/ci_string.h"
#include "tools/match.h"
#include "tools/variable_table.h"

namespace Vesk {

class Builder;

/// A named tool. It decides whether it can build a target and how well it fits, and makes the
/// builder that does the work. Owned by its toolbox; not changed after construction.
class Matcher {
  public:
    virtual ~Matcher() = default;

    /// A new matcher of the same class, copied member by member.
    virtual std::unique_ptr<Matcher> clone() const = 0;

  protected:
    /// What the concrete tool adds to a match whose needs are satisfied: whether it can build, and
    /// kinds of match that take precedence over the comparison of wants.
    virtual MatchResult matchTool(const Context& target) const;

  public:
    /// Of the variables of a target: the score of a tool that cannot build it helps nobody.
    enum class Comparison : std::uint8_t {
        Always,
        IfNeeded,  ///< if the tool can build the target, or the log shows the outcome
    };

    /// The builder of this tool for the target. Throws VeskException if there is none.
    virtual std::shared_ptr<Builder> createBuilder(const Context& target) const = 0;

    /// Compares the tool with a target in which the values of `comparedNames` are resolved. A value
    /// that is still an identifier differs from every other.
    MatchResult match(const Context& target, Comparison comparison = Comparison::Always) const;

    const CiString& name() const noexcept { return name_; }

    /// The word for `tool_type` under which the class is registered.
    const std::string& typeWord() const noexcept { return typeWord_; }

    /// One line for the tool selection report: the type word, the name in apostrophes and the
    /// toolchain's name, if declared.
    virtual std::string description() const;

    /// The layer under the context of a target that this tool builds: `tool_type` and everything
    /// that the tool's declaration gave, with its operators and modifiers.
    const AssignmentMap& declaredSettings() const noexcept { return declared_; }

    /// The variables of a target whose values this tool compares, as opposed to those that it only
    /// checks for existence.
    virtual std::vector<CiString> comparedNames() const;

    const AssignmentMap& wants() const noexcept { return wants_; }
    const AssignmentMap& needs() const noexcept { return needs_; }

  protected:
    /// Puts the declaration over the class's tables. `must` holds the assignments with "!", which
    /// may satisfy needs; `others` holds the rest. Throws what a derived class throws for a
    /// declaration that cannot work.
    Matcher(CiString name, std::string typeWord, const AssignmentMap& wants,
            const AssignmentMap& needs, const AssignmentMap& must, const AssignmentMap& others);
    Matcher(const Matcher&) = default;
    Matcher& operator=(const Matcher&) = delete;

  private:
    bool needsSatisfied(const Context& target) const;
    void compareWants(const Context& target, MatchResult& result) const;

    CiString name_;
    std::string typeWord_;
    AssignmentMap wants_;  ///< compared to score a target, with the tool's own values
    AssignmentMap needs_;  ///< must be in a target unless they have a value here
    AssignmentMap declared_;
};

}  // namespace Vesk
