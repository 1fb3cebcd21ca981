// The sources of a C-family target.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/support/target_paths.h"

namespace Vesk {

enum class Language { C, Cpp, Assembler };

inline constexpr Language kLanguages[] = {Language::C, Language::Cpp, Language::Assembler};

/// The names of the variables: C_FILES and C_FLAGS, CPP_FILES and CPP_FLAGS, ASM_FILES and
/// ASM_FLAGS.
const char* filesVariable(Language language) noexcept;
const char* flagsVariable(Language language) noexcept;

struct SourceFile {
    std::string path;
    std::string object;
    std::string dependencyFile;
    Language language = Language::C;

    /// With its dot, as written: ".c", ".S"; empty if there is none.
    std::string_view extension() const noexcept;
};

/// The files in the three variables, without those in EXCLUDE_FILES, each once, in the order of the
/// variables and of their entries. Throws VeskException for a file of two languages, and whatever
/// TargetPaths::files throws.
std::vector<SourceFile> sourceFiles(const TargetContext& target, const TargetPaths& paths,
                                    std::string_view objectSuffix);

/// Whether the target names any source.
bool hasSources(const Context& target);

}  // namespace Vesk
