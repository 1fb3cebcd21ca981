#include "editor/symbols.h"

#include <algorithm>
#include <utility>

#include "editor/computed_dependencies.h"
#include "types/values/expansion.h"
#include "types/values/identifier_path.h"

namespace Vesk::editor {
namespace {

constexpr std::string_view kNameCharacters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";

/// Fills the symbols from a tree. Every function copes with parts that are missing.
class Collector {
  public:
    Collector(std::string_view text, const SyntaxTree& tree) : text_(text), tree_(tree) {}

    Symbols run() {
        for (const SyntaxNode& item : tree_.root.children) {
            topLevel(item);
        }
        return std::move(symbols_);
    }

  private:
    // --- Tokens ---

    TextSpan spanOf(const SyntaxNode& node) const {
        return {tree_.tokens[node.first].span.begin, tree_.tokens[node.end - 1].span.end};
    }
    std::string_view textOf(std::uint32_t token) const {
        return tree_.tokens[token].span.of(text_);
    }

    bool isWord(std::uint32_t token) const {
        const TokenClass kind = tree_.tokens[token].kind;
        return kind == TokenClass::Name || kind == TokenClass::Keyword;
    }

    Name nameAt(std::uint32_t token) const {
        return {std::string(textOf(token)), tree_.tokens[token].span};
    }

    /// The first token of a kind among those of the node itself; an empty name without one.
    Name firstName(const SyntaxNode& node, TokenClass kind = TokenClass::Name) const {
        for (std::uint32_t token = node.first; token < node.end; ++token) {
            if (tree_.tokens[token].kind == kind) {
                return nameAt(token);
            }
        }
        return {};
    }

    /// What is between the quotes.
    Name unquoted(std::uint32_t token) const {
        TextSpan span = tree_.tokens[token].span;
        const bool closed = span.size() >= 2;
        span.begin += closed ? 1 : 0;
        span.end -= closed ? 1 : 0;
        return {std::string(span.of(text_)), span};
    }

    // --- Files ---

    void topLevel(const SyntaxNode& item) {
        switch (item.rule) {
            case SyntaxRule::UnitName:
                symbols_.unit = firstName(item);
                break;
            case SyntaxRule::ProjectName:
                symbols_.project = firstName(item);
                break;
            case SyntaxRule::Target:
                target(item);
                break;
            default:
                section(item);
                break;
        }
    }

    void section(const SyntaxNode& node) {
        symbols_.sections.push_back(spanOf(node));
        for (const SyntaxNode& item : node.children) {
            switch (item.rule) {
                case SyntaxRule::Profile:
                    block(item, BlockKind::Profile);
                    break;
                case SyntaxRule::Tool:
                    block(item, BlockKind::Tool);
                    break;
                case SyntaxRule::UnitEntry:
                    unitEntry(item);
                    break;
                case SyntaxRule::PathImport:
                case SyntaxRule::RegistryImport:
                    import(item);
                    break;
                default:
                    break;
            }
        }
    }

    void unitEntry(const SyntaxNode& node) {
        UnitSymbol unit{firstName(node), {}, spanOf(node)};
        for (std::uint32_t token = node.first; token < node.end; ++token) {
            if (tree_.tokens[token].kind == TokenClass::String) {
                unit.files.push_back(unquoted(token));
            }
        }
        symbols_.units.push_back(std::move(unit));
    }

    void import(const SyntaxNode& node) {
        ImportSymbol made;
        made.byPath = node.rule == SyntaxRule::PathImport;
        made.span = spanOf(node);
        std::uint32_t token = node.first;
        for (const SyntaxNode& child : node.children) {
            (child.rule == SyntaxRule::SourceProfile ? made.sourceProfile : made.importedProfile) =
                firstName(child);
        }
        for (; token < node.end; ++token) {
            const bool inChild =
                std::ranges::any_of(node.children, [token](const SyntaxNode& child) {
                    return child.first <= token && token < child.end;
                });
            if (inChild) {
                continue;
            }
            if (tree_.tokens[token].kind == TokenClass::String) {
                made.location = unquoted(token);
            } else if (isWord(token)) {
                (made.byPath ? made.alias : made.location) = nameAt(token);
            }
        }
        symbols_.imports.push_back(std::move(made));
    }

    // --- Blocks ---

    Block& newBlock(const SyntaxNode& node, BlockKind kind) {
        Block& made = symbols_.blocks.emplace_back();
        made.kind = kind;
        made.name = firstName(node);
        made.span = spanOf(node);
        return made;
    }

    void block(const SyntaxNode& node, BlockKind kind) {
        Block& made = newBlock(node, kind);
        for (const SyntaxNode& child : node.children) {
            body(child, made);
        }
    }

    void target(const SyntaxNode& node) {
        Block& made = newBlock(node, BlockKind::Target);
        for (const SyntaxNode& child : node.children) {
            if (child.rule == SyntaxRule::Parameter) {
                made.parameters.push_back(nameAt(child.first));
            } else if (child.rule == SyntaxRule::Dependency) {
                dependency(child, made);
            } else {
                body(child, made);
            }
        }
        addComputedDependencies(made, text_, tree_);
    }

    void body(const SyntaxNode& node, Block& made) {
        if (node.rule == SyntaxRule::Context) {
            made.body = spanOf(node);
            context(node, made, false);
        }
    }

    void context(const SyntaxNode& node, Block& made, bool nested) {
        for (const SyntaxNode& child : node.children) {
            if (child.rule == SyntaxRule::Assignment) {
                assignment(child, made, nested);
            } else if (child.rule == SyntaxRule::ConditionalContext) {
                conditional(child, made, nested);
            }
        }
    }

    void conditional(const SyntaxNode& node, Block& made, bool nested) {
        for (const SyntaxNode& child : node.children) {
            if (child.rule == SyntaxRule::Context) {
                context(child, made, nested);
            } else {
                reads(child, made);
            }
        }
    }

    void assignment(const SyntaxNode& node, Block& made, bool nested) {
        Write write;
        write.nested = nested;
        write.span = spanOf(node);
        for (std::uint32_t token = node.first; token < node.end; ++token) {
            if (tree_.tokens[token].isComment()) {
                continue;
            }
            if (!write.name.empty()) {
                write.op = textOf(token);
                break;
            }
            if (isWord(token)) {
                write.name = nameAt(token);
            } else {
                write.modifier = textOf(token);
            }
        }
        if (!node.children.empty()) {
            write.value = spanOf(node.children.back());
        }
        made.writes.push_back(std::move(write));
        for (const SyntaxNode& child : node.children) {
            reads(child, made);
        }
    }

    // --- What is read ---

    void reads(const SyntaxNode& node, Block& made) {
        if (node.rule == SyntaxRule::Identifier) {
            made.reads.push_back(path(node));
        } else if (node.rule == SyntaxRule::Context) {
            context(node, made, true);
            return;
        }
        if (node.rule == SyntaxRule::Value) {
            const SyntaxToken& token = tree_.tokens[node.first];
            if (token.kind == TokenClass::String || token.kind == TokenClass::PathString) {
                readsOfText(token.span, made);
            }
        }
        for (const SyntaxNode& child : node.children) {
            reads(child, made);
        }
    }

    Read path(const SyntaxNode& node) const {
        Read read;
        for (const SyntaxNode& child : node.children) {
            read.path.push_back(nameAt(child.first));
        }
        if (read.path.empty()) {
            read.path.push_back(nameAt(node.first));
        }
        return read;
    }

    void readsOfText(TextSpan span, Block& made) const {
        const std::string_view text = span.of(text_);
        for (const TextReference& reference : referencesIn(text)) {
            const std::string_view inside =
                text.substr(reference.begin, reference.end - reference.begin);
            Read read;
            for (const std::size_t place : segmentPlaces(inside)) {
                const std::size_t end = inside.find_first_not_of(kNameCharacters, place);
                const std::string_view name = inside.substr(place, end - place);
                const auto begin = static_cast<std::uint32_t>(span.begin + reference.begin + place);
                read.path.push_back(
                    {std::string(name), {begin, begin + static_cast<std::uint32_t>(name.size())}});
            }
            if (!read.path.empty()) {
                made.reads.push_back(std::move(read));
            }
        }
    }

    // --- Dependencies ---

    void dependency(const SyntaxNode& node, Block& made) {
        DependencySymbol found;
        found.span = spanOf(node);
        found.mergesOutputs = textOf(node.first) == "+";
        std::uint32_t after = node.first;
        for (const SyntaxNode& child : node.children) {
            after = child.end;
            if (child.rule == SyntaxRule::DirectDependency) {
                direct(child, found);
            } else if (child.rule == SyntaxRule::Macro && !child.children.empty()) {
                found.macro = path(child.children.front());
            } else if (child.rule == SyntaxRule::Argument) {
                ++found.argumentCount;
                if (!child.children.empty()) {
                    found.arguments.push_back(path(child.children.front()));
                }
            }
        }
        for (; after < node.end; ++after) {
            found.mergesAlias = found.mergesAlias || textOf(after) == "+>";
            if (isWord(after)) {
                found.alias = nameAt(after);
            }
        }
        made.dependencies.push_back(std::move(found));
    }

    void direct(const SyntaxNode& node, DependencySymbol& found) const {
        for (std::uint32_t token = node.first; token < node.end; ++token) {
            if (textOf(token) == "/") {
                found.project = std::exchange(found.target, {});
            } else if (textOf(token) == "::") {
                found.unit = std::exchange(found.target, {});
            } else if (isWord(token)) {
                found.target = nameAt(token);
            }
        }
    }

    std::string_view text_;
    const SyntaxTree& tree_;
    Symbols symbols_;
};

}  // namespace

Symbols symbolsOf(std::string_view text, const SyntaxTree& tree) {
    return Collector(text, tree).run();
}

}  // namespace Vesk::editor
