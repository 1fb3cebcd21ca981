// What a text defines and names, with the places: the index on which everything else in this room
// works. Made from the parse tree, so of a broken text there is what the parser could make of it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "grammar/syntax_tree.h"

namespace Vesk::editor {

/// A word of a text. Empty: it is not written.
struct Name {
    std::string text;
    TextSpan span;

    bool empty() const noexcept { return text.empty(); }
};

/// A path of names that is read: `lib.FLAGS` as a value, `${lib.FLAGS}` in a text.
struct Read {
    std::vector<Name> path;  ///< never empty
    bool dotted() const noexcept { return path.size() > 1; }
};

/// An assignment.
struct Write {
    Name name;
    std::string modifier;  ///< as it is written: "^", "!", "?" or nothing
    std::string op;        ///< likewise; nothing for a bare name
    TextSpan value;        ///< empty for a bare name
    TextSpan span;         ///< all of it
    bool nested = false;   ///< in a context that is a value: no variable of the target
};

struct DependencySymbol {
    TextSpan span;  ///< all of it
    Name project;
    Name unit;
    Name target;                  ///< empty for a macro
    std::optional<Read> macro;    ///< of `@name`
    std::vector<Read> arguments;  ///< without a lone "."
    std::size_t argumentCount = 0;
    Name alias;
    bool mergesAlias = false;    ///< "+>"
    bool mergesOutputs = false;  ///< "+"
};

enum class BlockKind : std::uint8_t { Target, Profile, Tool };

/// A target, a profile or a tool: a name with variables.
struct Block {
    BlockKind kind = BlockKind::Target;
    Name name;
    TextSpan span;  ///< all of it
    TextSpan body;  ///< the braces and what is in them; empty if they are missing
    std::vector<Name> parameters;
    std::vector<DependencySymbol> dependencies;
    std::vector<Write> writes;
    std::vector<Read> reads;
};

/// A unit of a project file.
struct UnitSymbol {
    Name name;
    std::vector<Name> files;  ///< without the quotes
    TextSpan span;
};

struct ImportSymbol {
    bool byPath = false;
    Name location;  ///< without the quotes
    Name alias;
    Name sourceProfile;
    Name importedProfile;
    TextSpan span;
};

struct Symbols {
    Name unit;     ///< of the `unit` line
    Name project;  ///< of the `name` line
    std::vector<Block> blocks;
    std::vector<UnitSymbol> units;
    std::vector<ImportSymbol> imports;
    std::vector<TextSpan> sections;  ///< `units { ... }` and the like
};

Symbols symbolsOf(std::string_view text, const SyntaxTree& tree);

}  // namespace Vesk::editor
