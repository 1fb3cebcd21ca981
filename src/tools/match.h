// The result of comparing a tool with a target.
#pragma once

#include <cstdint>
#include <map>

#include "base/ci_string.h"

namespace Vesk {

/// How a variable that a tool compares fits.
enum class MatchKind : std::uint32_t {
    NoMatch = 0,       ///< the target only declares it as an output, without a value
    PartialMatch = 1,  ///< the target has it with another value, or without one to compare
    ExactMatch = 2,    ///< both have the same value
};

/// Whether the tool can build the target at all.
enum class MatchNote : std::uint32_t { BuildImpossible = 0, BuildPossible = 1 };

/// The value's name, as log lines print it.
constexpr const char* matchNoteName(MatchNote note) noexcept {
    return note == MatchNote::BuildPossible ? "BuildPossible" : "BuildImpossible";
}

struct MatchResult {
    std::map<CiString, MatchKind, CiLess>
        matches;  ///< by variable; those not in the target are absent
    MatchNote note = MatchNote::BuildImpossible;
};

/// What each kind of match adds to a tool's score.
struct MatchWeights {
    std::int32_t exact = 2;
    std::int32_t partial = 1;
    std::int32_t none = 0;
};

}  // namespace Vesk
