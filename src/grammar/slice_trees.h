// Parse trees of slices of a text.
//
// Which tree a text has depends on the types of its tokens alone, and the targets of a large unit
// repeat few sequences of them. So trees are kept, and one that fits the next slice gets its
// tokens: that takes a tenth of parsing it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "grammar/recognisers.h"
#include "grammar/text_stream.h"

namespace Vesk {

/// A tree without errors whose tokens can be replaced.
class RefillableTree {
  public:
    /// Takes over the nodes of `recognisers`, whose last tree is that of `root`.
    RefillableTree(Recognisers& recognisers, grammar::VeskTopParser::UnitFileContext& root);
    RefillableTree(const RefillableTree&) = delete;
    RefillableTree& operator=(const RefillableTree&) = delete;
    ~RefillableTree();

    /// Tokens of the same types as those that it was made of.
    grammar::VeskTopParser::UnitFileContext* with(const std::vector<antlr4::Token*>& tokens);

  private:
    struct Leaf {
        antlr4::tree::TerminalNodeImpl* node;
        std::size_t token;
    };
    struct Part {
        antlr4::ParserRuleContext* node;
        std::optional<std::size_t> start;
        std::optional<std::size_t> stop;
    };

    void add(antlr4::tree::ParseTree& node);

    antlr4::tree::ParseTreeTracker nodes_;
    grammar::VeskTopParser::UnitFileContext* root_;
    std::vector<Leaf> leaves_;
    std::vector<Part> parts_;
};

class SliceTrees {
  public:
    /// Messages call the text `name`.
    explicit SliceTrees(std::string name) : name_(std::move(name)) {}

    /// The tree of a slice as of a unit file; null for one with errors. `line` (from 1) and
    /// `column` (from 0) are the place of its first character in the file. The tree and its tokens
    /// live until the next call; the text must live as long.
    grammar::VeskTopParser::UnitFileContext* parse(std::string_view slice, std::size_t line,
                                                   std::size_t column);

  private:
    std::string name_;
    std::optional<TextStream> input_;
    std::optional<Recognisers> recognisers_;
    std::unordered_map<std::string, RefillableTree> trees_;  ///< by the types of their tokens
};

}  // namespace Vesk
