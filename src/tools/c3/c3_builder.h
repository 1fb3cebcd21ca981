// Builds C3 programs, libraries and objects.
#pragma once

#include <memory>

#include "tools/discovery/toolchain_programs.h"
#include "tools/support/c_builder.h"

namespace Vesk {

/// One command makes the whole product: the compiler takes all sources at once and links by itself.
class C3Builder : public CBuilder {
  public:
    C3Builder(DeclaredPlace place, std::shared_ptr<ToolchainPrograms> programs);

    /// Never for objects: which ones there are is known only after compiling.
    Overlap overlap(const TargetContext& target) const override;

    bool onlyMakesRecipes() const override { return false; }

    /// Adds the objects, which are named after the modules in the sources.
    std::shared_ptr<Context> complete(TargetContext& target, int exitCode) override;

  protected:
    Created doCreateRecipes(TargetContext& target, const BuildEnv& environment) const override;

  private:
    DeclaredPlace place_;
    std::shared_ptr<ToolchainPrograms> programs_;
};

}  // namespace Vesk
