#include "tools/tool_registry.h"

#include <map>
#include <utility>

namespace Vesk {

namespace {

using Registry = std::map<CiString, MatcherFactory, CiLess>;

/// Made on first use: registration objects of other files may run before this file's own.
Registry& registry() {
    static Registry types;
    return types;
}

}  // namespace

ToolTypeRegistration::ToolTypeRegistration(std::string word, MatcherFactory factory)
    : word_(std::move(word)) {
    registry().try_emplace(CiString(word_), std::move(factory));
}

const MatcherFactory* findToolType(std::string_view word) {
    const auto found = registry().find(word);
    return found == registry().end() ? nullptr : &found->second;
}

bool isKnownToolType(std::string_view word) {
    return findToolType(word) != nullptr;
}

std::vector<std::string> toolTypeWords() {
    std::vector<std::string> words;
    for (const auto& [word, factory] : registry()) {
        words.push_back(word.str());
    }
    return words;
}

}  // namespace Vesk
