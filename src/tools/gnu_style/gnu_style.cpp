#include "tools/gnu_style/gnu_style.h"

#include "tools/support/value_lists.h"

namespace Vesk {

PlacedGnuStyle::PlacedGnuStyle(TargetContext& target, const DeclaredPlace& declared,
                               ToolchainPrograms& programs)
    : target_(target),
      declared_(declared),
      programs_(programs),
      place_(programs.place(declared, target)) {}

std::vector<std::string> PlacedGnuStyle::compilerOptions() const {
    if (!hasEntries(target_, "SYSROOT")) {
        return {};
    }
    return {"--sysroot=" + *target_.textOf("SYSROOT")};
}

std::vector<std::filesystem::path> PlacedGnuStyle::searchDirectories() const {
    return runDirectories(place_);
}

}  // namespace Vesk
