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

    /// What `^name += ...` added, apart from what the variable held before: the part that a
    /// dependant which merges outputs appends to its own variable. Empty for other assignments.
    ValuePtr exported;

    /// The assignments that this one is the sum of, in their order, where what they give depends on
    /// what they are merged onto: `x ?= "q" x += "r"` onto a value appends "r" only. Empty for a
    /// single one.
    std::vector<Assignment> written;

    SourcePlace place;  ///< where it was written

    /// Name, operator and the value's display form, as dumps and messages show it.
    std::string toDisplayString() const;

    /// The assignment as the language's grammar reads it back to an equal one, modifier included:
    /// `^FLAGS += ["a", R"(b"c)"]`. Nested contexts are written out. Throws VeskException for a
    /// text that no literal can hold.
    std::string toSourceString() const;
};

/// How source text merges the assignment: a modifier that is written is taken over.
inline ModifierMode writtenMode(const Assignment& assignment) noexcept {
    return assignment.modifier == AssignModifier::None ? ModifierMode::Keep : ModifierMode::Copy;
}

/// An assignment with "=" of a value that is final: it is not expanded again.
Assignment resolvedAssignment(CiString name, ValuePtr value,
                              AssignModifier modifier = AssignModifier::None);

/// Such an assignment of a text, held as a raw string.
Assignment textAssignment(CiString name, std::string text);

/// The same with the value copied all the way down, to be merged into another context.
Assignment deepCopy(const Assignment& assignment);

/// As source text writes them: " += ", "^". An operator that is none assigns.
std::string_view sourceText(AssignOperator op);
std::string_view sourceText(AssignModifier modifier);

/// The value as the grammar reads it back. Throws as `Assignment::toSourceString`.
std::string toSourceString(const VeskValue& value);

}  // namespace Vesk
