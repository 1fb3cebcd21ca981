#include "tools/tool_registry.h"

#include <algorithm>
#include <map>
#include <utility>

namespace Vesk {

namespace {

using Registry = std::map<CiString, ToolType, CiLess>;

/// Created on first use: registration objects of other files may run before this file's own.
Registry& registry() {
    static Registry types;
    return types;
}

bool namesSources(const Context& target, bool ofToolchains) {
    return std::ranges::any_of(registry(), [&](const auto& entry) {
        const ToolType& type = entry.second;
        return type.isToolchain() == ofToolchains &&
               std::ranges::any_of(type.sources, [&target](std::string_view name) {
                   return target.find(name) != nullptr;
               });
    });
}

}  // namespace

ToolTypeRegistration::ToolTypeRegistration(ToolType type) : word_(type.word) {
    registry().try_emplace(CiString(word_), std::move(type));
}

const ToolType* findToolType(std::string_view word) {
    const auto found = registry().find(word);
    return found == registry().end() ? nullptr : &found->second;
}

bool isKnownToolType(std::string_view word) {
    return findToolType(word) != nullptr;
}

std::vector<const ToolType*> toolTypes() {
    std::vector<const ToolType*> types;
    for (const auto& [word, type] : registry()) {
        types.push_back(&type);
    }
    std::ranges::stable_sort(types, {}, &ToolType::rank);
    return types;
}

std::vector<std::string> toolTypeWords() {
    std::vector<std::string> words;
    for (const auto& [word, type] : registry()) {
        words.push_back(word.str());
    }
    return words;
}

bool namesToolchainSources(const Context& target) {
    return namesSources(target, true);
}

bool spellsOutCommands(const Context& target) {
    return namesSources(target, false);
}

std::vector<std::string> meantBy(std::string_view typed, const ToolType* only) {
    std::vector<std::string> names;
    const auto addFrom = [&](const ToolType& type) {
        for (const Misnomer& misnomer : type.misnomers) {
            if (equalsIgnoringCase(misnomer.typed, typed) &&
                std::ranges::find(names, misnomer.meant) == names.end()) {
                names.emplace_back(misnomer.meant);
            }
        }
    };
    if (only != nullptr) {
        addFrom(*only);
    } else {
        std::ranges::for_each(toolTypes(), [&](const ToolType* type) { addFrom(*type); });
    }
    return names;
}

}  // namespace Vesk
