// References to other targets.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/source_place.h"
#include "types/values/identifier_path.h"

namespace Vesk {

class TargetContext;

/// The parts of "project/unit::target"; the first two may be empty.
struct DependencyReference {
    std::string ns;    ///< the project; empty: the current one
    std::string unit;  ///< empty: the current one
    std::string target;

    std::string toDisplayString() const;
};

enum class DependencyKind { Direct, Macro };

enum class AliasKind : std::uint32_t {
    None = 0,
    Single = 1,  ///< => name: the outputs are seen under that name
    Merge = 2,   ///< +> name: several dependencies share that name
};

struct DependencyRecord {
    bool merge = false;  ///< "+": the outputs also become the dependant's own
    DependencyKind kind = DependencyKind::Direct;
    DependencyReference reference;
    IdentifierPath macro;  ///< set for a macro, and kept in the records that it yields
    std::vector<IdentifierPath> parameters;
    bool sourceParameter = false;  ///< ".": the first argument is the context that holds the macro
    std::string alias;
    AliasKind aliasKind = AliasKind::None;
    SourcePlace place;
};

/// Splits "project/unit::target". Throws std::runtime_error for empty parts.
DependencyReference splitDependencyString(std::string_view text);

/// Splits the text of a dynamic dependency value into its items, at white space outside
/// parentheses. Throws VeskException.
std::vector<std::string> parseDynamicDependencies(std::string_view text);

struct DynamicDependency {
    DependencyReference reference;
    std::vector<IdentifierPath> parameters;
};

/// Reads one item, "unit::target(a, b)". `whole` is the value's text, for the message. Throws
/// VeskException, and std::runtime_error for a reference with empty parts.
DynamicDependency parseDynamicDependency(std::string_view item, std::string_view whole);

/// The target's dependencies in order, with every macro replaced by what its variable lists. An
/// empty macro draws a warning and is left out.
std::vector<DependencyRecord> createDependencyList(TargetContext& context);

}  // namespace Vesk
