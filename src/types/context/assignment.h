// One variable of a context.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/ci_string.h"
#include "base/source_place.h"
#include "types/values/value.h"

namespace Vesk {

enum class AssignOperator : std::uint32_t {
    Assign = 1,       ///< =
    Append = 2,       ///< +=
    AssignEmpty = 3,  ///< ?=  assigns only where nothing is stored
    None = 4,         ///< a bare name: clears the variable
};

enum class AssignModifier : std::uint32_t {
    None = 0,
    Output = 1,  ///< ^  dependants see it
    Must = 2,    ///< !  a value by which a tool's declaration satisfies its own needs
    Hint = 3,    ///< ?  takes part in choosing the tool only
};

/// What a merge does with the stored modifier.
enum class ModifierMode : std::uint32_t { Keep = 0, Copy = 1, Clear = 2 };

/// How far the value of an assignment is resolved.
enum class ResolveState : std::uint32_t { Unresolved = 0, InProgress = 1, Resolved = 2 };

struct Assignment {
    ResolveState state = ResolveState::Unresolved;  ///< reset by every merge
    CiString name;
    ValuePtr value;  ///< may be empty
    AssignOperator op = AssignOperator::Assign;
    AssignModifier modifier = AssignModifier::None;

    /// What `^name += ...` added, apart from what the variable held before. A dependant that merges
    /// outputs appends this part to its own variable. Empty for other assignments.
    ValuePtr exported;

    /// The assignments that make up this one, in order, if their result depends on what they are
    /// merged onto: `x ?= "q" x += "r"` merged onto a value appends "r" only. Empty for a single
    /// assignment.
    std::vector<Assignment> written;

    SourcePlace place;  ///< where it was written

    /// Name, operator and the value's display form, as dumps and messages show them.
    std::string toDisplayString() const;

    /// The assignment in the form that the grammar reads back as an equal one, modifier included:
    /// `^FLAGS += ["a", R"(b"c)"]`. Nested contexts are written out. Throws VeskException for a
    /// text that no literal can hold.
    std::string toSourceString() const;
};

/// How source text merges the assignment: a modifier that is written replaces the stored one.
inline ModifierMode writtenMode(const Assignment& assignment) noexcept {
    return assignment.modifier == AssignModifier::None ? ModifierMode::Keep : ModifierMode::Copy;
}

/// An assignment with "=" of a final value, which is not expanded again.
Assignment resolvedAssignment(CiString name, ValuePtr value,
                              AssignModifier modifier = AssignModifier::None);

/// The same for a text, held as a raw string.
Assignment textAssignment(CiString name, std::string text);

/// A copy whose value is copied all the way down, to be merged into another context.
Assignment deepCopy(const Assignment& assignment);

/// As source text writes them: " += ", "^". An unknown operator is written as an assignment.
std::string_view sourceText(AssignOperator op);
std::string_view sourceText(AssignModifier modifier);

/// The value in the form that the grammar reads back. Throws as `Assignment::toSourceString` does.
std::string toSourceString(const VeskValue& value);

}  // namespace Vesk
