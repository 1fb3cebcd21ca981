// What is kept of the visit of a target that the cache had, or has now.
//
// A visit depends on the target's text and what surrounds it, on its arguments, on what its
// dependencies give, and on what it asks the system. While all of that is the same, it writes the
// same messages and has the same outputs, and nobody has to find that out again.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/content_hash.h"
#include "types/model/dependency.h"

namespace Vesk {

struct KeptDependency {
    DependencyReference reference;
    std::string_view arguments;  ///< encoded values
    ContentHash outputs;         ///< of what it gave, encoded
    std::string_view stamp;      ///< how its dependants see that it was built
    std::string_view said;       ///< while its outputs were taken over
};

/// All texts belong to somebody else.
struct KeptVisit {
    ContentHash record;           ///< of the cache's record for the target
    ContentHash digest;           ///< of the target's text and its surroundings
    std::string_view askedFirst;  ///< before the dependencies were visited; see platform/recorder.h
    std::string_view askedLast;   ///< after that
    std::string_view saidFirst;   ///< transcripts, without what every visit says
    std::string_view saidLast;
    bool coloured = false;  ///< the transcripts are
    bool hasRecipes = false;
    bool overlaps = false;  ///< it may be built while others are
    std::vector<KeptDependency> dependencies;
    std::string_view outputs;  ///< an encoded context
    std::string_view stamp;
    std::string_view recordKey;
    std::string_view tool;          ///< that was chosen, for those who want to see it
    std::string_view recipes = {};  ///< encoded; empty: they have to be made for every build

    /// Whether it writes more than every visit does.
    bool saysMore() const noexcept;
};

/// As bytes that begin with the record's hash, which is not known before the cache is saved.
std::string encoded(const KeptVisit& visit);
std::string_view withoutRecord(std::string_view encodedVisit) noexcept;

/// Refers to the bytes. Nothing for bytes that are no visit.
std::optional<KeptVisit> decodedVisit(std::string_view bytes);

}  // namespace Vesk
