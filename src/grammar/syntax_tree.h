// A text as editors look at it: its tokens, comments among them, and as much of its parse tree as
// errors leave. Plain data, made by the lexer and the parser that also read files for builds.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "grammar/model.h"

namespace Vesk {

/// Bytes of a text, from `begin` up to, not including, `end`.
struct TextSpan {
    std::uint32_t begin = 0;
    std::uint32_t end = 0;

    std::uint32_t size() const noexcept { return end - begin; }
    /// Also at the end, where a cursor stands behind the last character.
    bool touches(std::uint32_t place) const noexcept { return begin <= place && place <= end; }
    std::string_view of(std::string_view text) const { return text.substr(begin, size()); }

    friend bool operator==(const TextSpan&, const TextSpan&) = default;
};

enum class TokenClass : std::uint8_t {
    Punctuation,
    Keyword,
    Name,
    String,
    RawString,
    PathString,
    IndexName,
    Number,
    LineComment,
    BlockComment,
};

struct SyntaxToken {
    TokenClass kind = TokenClass::Punctuation;
    TextSpan span;

    bool isComment() const noexcept { return kind >= TokenClass::LineComment; }
};

/// The rules of the grammar, without those that only lead to one other.
enum class SyntaxRule : std::uint8_t {
    File,
    UnitName,
    Target,
    Parameter,
    Dependency,
    DirectDependency,
    Macro,
    Argument,
    Context,
    ConditionalContext,
    Condition,
    Assignment,
    Value,
    List,
    Identifier,
    Segment,
    Index,
    ProjectName,
    Imports,
    PathImport,
    RegistryImport,
    SourceProfile,
    ImportedProfile,
    Tools,
    Tool,
    Units,
    UnitEntry,
    Profiles,
    Profile,
    Projects,
    ProjectEntry,
};

/// A part of the tree. Tokens are counted with the comments; those at the edges are none.
struct SyntaxNode {
    SyntaxRule rule = SyntaxRule::File;
    std::uint32_t first = 0;
    std::uint32_t end = 0;  ///< behind the last token
    std::vector<SyntaxNode> children;

    bool isEmpty() const noexcept { return first >= end; }
};

struct SyntaxError {
    TextSpan span;
    std::string message;
    std::string hint;      ///< how to write what was probably meant; may be empty
    bool lexical = false;  ///< found by the lexer, such as a quote without its second one
};

struct SyntaxTree {
    std::vector<SyntaxToken> tokens;
    SyntaxNode root;
    std::vector<SyntaxError> errors;  ///< in the order in which they were found
};

/// Parses a text without byte order mark. Lines in messages are counted from `firstLine`. Nothing
/// is thrown for what is wrong with the text; one whose braces nest too deeply has an error and no
/// tree.
SyntaxTree parseSyntax(std::string_view text, FileKind kind, std::uint32_t firstLine = 1);

/// Only its tokens, and the errors of the lexer.
SyntaxTree lexSyntax(std::string_view text);

/// What a text without byte order mark looks like, by its first word; a name begins a unit file.
FileKind kindOfText(std::string_view text);

/// The words that cannot be the name of an assignment, in the order of the grammar.
std::vector<std::string> keywords();

}  // namespace Vesk
