#include "tools/gnu_style/gnu_toolchain.h"

#include "tools/support/value_lists.h"

namespace Vesk {

GnuStyle::GnuStyle(const GnuToolchain& toolchain, TargetContext& target,
                   const DeclaredPlace& declared, ToolchainPrograms& programs)
    : toolchain_(toolchain),
      target_(target),
      declared_(declared),
      programs_(programs),
      place_(programs.place(declared, target)) {}

std::string GnuStyle::program(GnuProgram program) const {
    const ProgramNames& names = toolchain_.of(program);
    return programs_.require(place_, {names.name, names.otherwise});
}

bool GnuStyle::isToldTarget() const {
    return toolchain_.traits.anyTarget && hasEntries(target_, "TARGET_TRIPLE");
}

std::string GnuStyle::triple() const {
    return isToldTarget() ? *target_.textOf("TARGET_TRIPLE") : declared_.triple;
}

std::vector<std::string> GnuStyle::compilerOptions() const {
    std::vector<std::string> options;
    if (isToldTarget()) {
        options.push_back("--target=" + triple());
    }
    if (hasEntries(target_, "SYSROOT")) {
        options.push_back("--sysroot=" + *target_.textOf("SYSROOT"));
    }
    return options;
}

std::vector<std::string> GnuStyle::linkerOptions() const {
    if (toolchain_.linker == nullptr || hasEntries(target_, "LINKER") ||
        programs_.find(place_, {std::string("ld.") + toolchain_.linker}).empty()) {
        return {};
    }
    return {std::string("-fuse-ld=") + toolchain_.linker};
}

std::vector<std::filesystem::path> GnuStyle::searchDirectories() const {
    return runDirectories(place_);
}

}  // namespace Vesk
