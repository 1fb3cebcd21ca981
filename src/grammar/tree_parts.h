// The parts of a parse tree's node.
#pragma once

#include <typeinfo>
#include <vector>

#include "antlr4-runtime.h"

namespace Vesk {

/// Whether a node is of exactly this class of a rule. The generated accessors cast every child to
/// find this out, which takes ten times as long; rules have no classes below their own.
template <class Rule>
bool isPart(const antlr4::tree::ParseTree& node) noexcept {
    return typeid(node) == typeid(Rule);
}

/// The first child of that rule; null if there is none.
template <class Rule>
Rule* partOf(const antlr4::ParserRuleContext& tree) noexcept {
    for (antlr4::tree::ParseTree* const child : tree.children) {
        if (isPart<Rule>(*child)) {
            return static_cast<Rule*>(child);
        }
    }
    return nullptr;
}

/// All children of that rule.
template <class Rule>
std::vector<Rule*> partsOf(const antlr4::ParserRuleContext& tree) {
    std::vector<Rule*> parts;
    for (antlr4::tree::ParseTree* const child : tree.children) {
        if (isPart<Rule>(*child)) {
            parts.push_back(static_cast<Rule*>(child));
        }
    }
    return parts;
}

}  // namespace Vesk
