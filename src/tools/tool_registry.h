// The types of tool that this program knows, by the word that `tool_type` names them with.
//
// Filled before main starts, by one ToolTypeRegistration object in the source file of each matcher
// class, and only read afterwards. A linker takes such an object out of a static library only when
// something refers to it: static_tools.cpp refers to those of all static tools, so every program
// that creates the static tools has their types registered.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tools/matcher.h"

namespace Vesk {

/// Makes a matcher from a tool's name and its declaration, split into assignments with "!" and all
/// others. May return null or throw when it cannot.
using MatcherFactory = std::function<std::unique_ptr<Matcher>(
    const CiString& name, const AssignmentMap& must, const AssignmentMap& others)>;

/// Registers a type for as long as the program runs; a word that is registered already keeps its
/// first factory.
class ToolTypeRegistration {
  public:
    ToolTypeRegistration(std::string word, MatcherFactory factory);

    const std::string& word() const noexcept { return word_; }

  private:
    std::string word_;
};

/// The factory for classes whose constructor takes what a factory is given.
template <class M>
MatcherFactory matcherFactory() {
    return [](const CiString& name, const AssignmentMap& must, const AssignmentMap& others) {
        return std::make_unique<M>(name, must, others);
    };
}

/// Null for an unknown word. Case does not matter.
const MatcherFactory* findToolType(std::string_view word);

bool isKnownToolType(std::string_view word);

/// Every registered word, in order.
std::vector<std::string> toolTypeWords();

}  // namespace Vesk
