#include "grammar/slice_trees.h"

#include <utility>

namespace Vesk {
namespace {

using Parser = grammar::VeskTopParser;

// Texts that people write repeat little; what is kept for them stays small.
constexpr std::size_t kMostTrees = 64;
constexpr std::size_t kMostTokens = 500;

/// There are fewer types than a char has values; EOF becomes one that no type has.
std::string typesOf(const std::vector<antlr4::Token*>& tokens) {
    std::string types;
    types.reserve(tokens.size());
    for (const antlr4::Token* const token : tokens) {
        types += static_cast<char>(token->getType());
    }
    return types;
}

std::optional<std::size_t> indexOf(const antlr4::Token* token) {
    return token == nullptr ? std::nullopt : std::optional(token->getTokenIndex());
}

}  // namespace

RefillableTree::RefillableTree(Recognisers& recognisers, Parser::UnitFileContext& root)
    : nodes_(std::exchange(recognisers.parser.getTreeTracker(), {})), root_(&root) {
    add(root);
}

RefillableTree::~RefillableTree() {
    nodes_.reset();
}

void RefillableTree::add(antlr4::tree::ParseTree& node) {
    if (auto* const leaf = dynamic_cast<antlr4::tree::TerminalNodeImpl*>(&node)) {
        leaves_.push_back({leaf, leaf->symbol->getTokenIndex()});
    } else if (auto* const part = dynamic_cast<antlr4::ParserRuleContext*>(&node)) {
        parts_.push_back({part, indexOf(part->start), indexOf(part->stop)});
        for (antlr4::tree::ParseTree* const child : part->children) {
            add(*child);
        }
    }
}

Parser::UnitFileContext* RefillableTree::with(const std::vector<antlr4::Token*>& tokens) {
    for (const Leaf& leaf : leaves_) {
        leaf.node->symbol = tokens[leaf.token];
    }
    for (const Part& part : parts_) {
        part.node->start = part.start ? tokens[*part.start] : nullptr;
        part.node->stop = part.stop ? tokens[*part.stop] : nullptr;
    }
    return root_;
}

Parser::UnitFileContext* SliceTrees::parse(std::string_view slice, std::size_t line,
                                           std::size_t column) {
    input_.emplace(slice, name_);
    if (!recognisers_) {
        makeFast(recognisers_.emplace(&*input_));
    }
    recognisers_->restart(&*input_, line, column);
    recognisers_->tokens.fill();
    const std::vector<antlr4::Token*> tokens = recognisers_->tokens.getTokens();
    const bool lexed = recognisers_->lexer.getNumberOfSyntaxErrors() == 0;
    std::string types = lexed ? typesOf(tokens) : std::string();
    if (const auto known = trees_.find(types); lexed && known != trees_.end()) {
        return known->second.with(tokens);
    }
    auto* const tree = tryRule(*recognisers_, &Parser::unitFile);
    if (tree != nullptr && trees_.size() < kMostTrees && tokens.size() <= kMostTokens) {
        trees_.try_emplace(std::move(types), *recognisers_, *tree);
    }
    return tree;
}

}  // namespace Vesk
