#include "tools/gnu_style/gnu_toolchain.h"

#include <algorithm>
#include <initializer_list>

#include "tools/support/value_lists.h"

namespace Vesk {

namespace {

bool linksStatically(const Context& target) {
    return std::ranges::any_of(std::initializer_list<const char*>{"FLAGS", "LINK_FLAGS"},
                               [&target](const char* flags) {
                                   const auto words = entriesOf(target, flags);
                                   return std::ranges::find(words, "-static") != words.end();
                               });
}

}  // namespace

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

PackageFlags GnuStyle::packages() const {
    const std::vector<std::string> packages = packagesNamed(entriesOf(target_, "PACKAGES"));
    if (packages.empty()) {
        return {};
    }
    return programs_.packages().flags(
        programs_.requirePkgConfig(place_, triple()), packages,
        linksStatically(target_) ? LinkKind::Static : LinkKind::Shared);
}

std::vector<std::filesystem::path> GnuStyle::searchDirectories() const {
    return runDirectories(place_);
}

}  // namespace Vesk
