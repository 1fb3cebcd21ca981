#include "editor/computed_dependencies.h"

#include <exception>
#include <utility>

#include "base/ci_string.h"
#include "base/exception.h"
#include "types/model/dependency.h"

namespace Vesk::editor {
namespace {

/// The names of one item of a list, "unit::target(a, b)", and where they stand.
class Item {
  public:
    /// `begin` is the item's place in the text.
    Item(std::string_view item, std::uint32_t begin) : item_(item), begin_(begin) {}

    DependencySymbol symbol(const DependencySymbol& macro) {
        const DynamicDependency parsed = parseDynamicDependency(item_, item_);
        DependencySymbol made;
        made.span = {begin_, begin_ + static_cast<std::uint32_t>(item_.size())};
        made.project = next(parsed.reference.ns);
        made.unit = next(parsed.reference.unit);
        made.target = next(parsed.reference.target);
        for (const IdentifierPath& path : parsed.parameters) {
            Read read;
            for (const IdentifierSegment& segment : path.segments) {
                read.path.push_back(next(segment.name));
            }
            made.arguments.push_back(std::move(read));
        }
        made.argumentCount =
            parsed.parameters.empty() ? macro.argumentCount : parsed.parameters.size();
        made.alias = macro.alias;
        made.mergesAlias = macro.mergesAlias;
        made.mergesOutputs = macro.mergesOutputs;
        return made;
    }

  private:
    /// The name where it stands next; names come in the order in which they are written.
    Name next(const std::string& name) {
        const std::size_t found = name.empty() ? std::string_view::npos : item_.find(name, from_);
        if (found == std::string_view::npos) {
            return {};
        }
        from_ = found + name.size();
        const auto begin = static_cast<std::uint32_t>(begin_ + found);
        return {name, {begin, begin + static_cast<std::uint32_t>(name.size())}};
    }

    std::string_view item_;
    std::uint32_t begin_;
    std::size_t from_ = 0;
};

void addItems(Block& block, const DependencySymbol& macro, std::string_view text, TextSpan span) {
    const std::string_view list = span.of(text);
    std::size_t from = 0;
    for (const std::string& item : parseDynamicDependencies(list)) {
        const std::size_t at = list.find(item, from);
        from = at + item.size();
        block.dependencies.push_back(
            Item(list.substr(at, item.size()), static_cast<std::uint32_t>(span.begin + at))
                .symbol(macro));
    }
}

void addText(Block& block, const DependencySymbol& macro, std::string_view text, TextSpan span) {
    span = {span.begin + 1, span.end - 1};
    if (span.of(text).find_first_of("$#") != std::string_view::npos) {
        return;  // what it names is known when it is expanded
    }
    try {
        addItems(block, macro, text, span);
    } catch (const VeskException&) {
        // A list that cannot be read is reported by whoever builds.
    } catch (const std::exception&) {
        // So is one with an empty name.
    }
}

}  // namespace

void addComputedDependencies(Block& block, std::string_view text, const SyntaxTree& tree) {
    const std::vector<DependencySymbol> written = block.dependencies;
    for (const DependencySymbol& macro : written) {
        if (!macro.macro || macro.macro->dotted()) {
            continue;
        }
        for (const Write& write : block.writes) {
            if (write.nested ||
                !equalsIgnoringCase(write.name.text, macro.macro->path.front().text)) {
                continue;
            }
            for (const SyntaxToken& token : tree.tokens) {
                if (token.kind == TokenClass::String && write.value.begin <= token.span.begin &&
                    token.span.end <= write.value.end) {
                    addText(block, macro, text, token.span);
                }
            }
        }
    }
}

}  // namespace Vesk::editor
