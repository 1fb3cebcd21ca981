// Finding the tests of a project.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "project/project_catalog.h"

namespace Vesk {

/// By which a target, with "yes", is a test.
inline constexpr const char* kTestVariable = "TEST";

/// Where tests are looked for.
struct TestScope {
    std::optional<TargetLocation> from;  ///< this one and what it reaches; nothing: the active page
    std::string pattern;                 ///< as testNameFits takes it; empty: all
};

/// In the order in which they are written, or reached. Targets with parameters are no tests by
/// themselves. Throws VeskException for a TEST that is neither yes nor no, and for dependencies
/// that are nowhere.
std::vector<TargetLocation> findTests(const ProjectCatalog& catalog, const TestScope& scope);

}  // namespace Vesk
