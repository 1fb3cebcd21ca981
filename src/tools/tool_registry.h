// The types of tool that this program knows, by their words for `tool_type`, and everything that
// the rest of the program has to know about each.
//
// The registry is filled before main starts, by one ToolTypeRegistration object in the source file
// of each matcher class, and is only read after that. A linker takes such an object out of a static
// library only if something refers to it; static_tools.cpp refers to those of all static tools, so
// every program that creates the static tools has their types registered.
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/matcher.h"
#include "tools/toolchain_detection.h"
#include "tools/variables.h"

namespace Vesk {

/// Makes a matcher from a tool's name and its declaration, which is split into the assignments with
/// "!" and all others. May return null or throw if that is not possible.
using MatcherFactory = std::function<std::unique_ptr<Matcher>(
    const CiString& name, const AssignmentMap& must, const AssignmentMap& others)>;

/// A name that people know from other tools, "LDFLAGS", and the variable with that meaning here.
struct Misnomer {
    std::string_view typed;
    std::string_view meant;
};

/// Everything referred to lives as long as the program.
struct ToolType {
    std::string_view word;
    MatcherFactory factory;
    std::span<const std::string_view> sources = {};  ///< by which a target asks for it
    std::span<const Misnomer> misnomers = {};
    VariableGroups variables = {};

    /// For a toolchain: finds those of this machine. A type without a detector exists without being
    /// declared.
    ToolchainDetector detect = nullptr;
    int rank = 0;  ///< detectors are asked in this order, the lowest first

    /// The word in the name of a compiler of the type, "gcc"; empty if its directory shows that it
    /// is there.
    std::string_view compiler = {};

    bool isToolchain() const noexcept { return detect != nullptr; }
};

/// Registers a type for the life of the program. A word that is already registered keeps its first
/// type.
class ToolTypeRegistration {
  public:
    explicit ToolTypeRegistration(ToolType type);

    std::string word() const { return std::string(word_); }

  private:
    std::string_view word_;
};

/// The factory for classes whose constructor takes what a factory gets.
template <class M>
MatcherFactory matcherFactory() {
    return [](const CiString& name, const AssignmentMap& must, const AssignmentMap& others) {
        return std::make_unique<M>(name, must, others);
    };
}

/// Null for an unknown word. Case does not matter.
const ToolType* findToolType(std::string_view word);

bool isKnownToolType(std::string_view word);

/// All registered types, in the order of their ranks, then of their words.
std::vector<const ToolType*> toolTypes();

/// All registered words, in order.
std::vector<std::string> toolTypeWords();

/// Whether the target names a source of a toolchain.
bool namesToolchainSources(const Context& target);

/// Whether the target names a source of a tool that exists without being declared. Then it is meant
/// for that tool, whatever else it holds.
bool spellsOutCommands(const Context& target);

/// The variables probably meant by this name: those of one type, or of all, each once.
std::vector<std::string> meantBy(std::string_view typed, const ToolType* only = nullptr);

}  // namespace Vesk
