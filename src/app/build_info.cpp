#include "app/build_info.h"

#include <RuntimeMetaData.h>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <xxhash.h>

#include "app/version.h"

// The build with CMake gives it, see cmake/Commit.cmake.
#ifndef VESK_COMMIT
#define VESK_COMMIT "unknown"
#endif

namespace Vesk {
namespace {

std::string compiler() {
#if defined(__clang__)
    return "Clang " __clang_version__;
#else
    return fmt::format("GCC {}.{}.{}", __GNUC__, __GNUC_MINOR__, __GNUC_PATCHLEVEL__);
#endif
}

/// "9.1.0" of 90100: two digits for each but the first.
std::string dotted(unsigned number) {
    return fmt::format("{}.{}.{}", number / 10000, number / 100 % 100, number % 100);
}

}  // namespace

std::string buildInfo() {
    return fmt::format(
        "vesk {}\ncommit: {}\ncompiler: {}\nlibraries: ANTLR runtime {}, fmt {}, nlohmann/json "
        "{}.{}.{}, xxHash {}",
        kVersion, VESK_COMMIT, compiler(), antlr4::RuntimeMetaData::VERSION, dotted(FMT_VERSION),
        NLOHMANN_JSON_VERSION_MAJOR, NLOHMANN_JSON_VERSION_MINOR, NLOHMANN_JSON_VERSION_PATCH,
        dotted(XXH_VERSION_NUMBER));
}

}  // namespace Vesk
