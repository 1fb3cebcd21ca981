#include <algorithm>
#include <set>

#include "base/ci_string.h"
#include "editor/checks.h"
#include "editor/names.h"

namespace Vesk::editor {
namespace {

using Names = std::set<CiString, CiLess>;

void addReads(const Block& block, Names& names) {
    const auto add = [&names](const Read& read) { names.emplace(read.path.front().text); };
    std::ranges::for_each(block.reads, add);
    for (const DependencySymbol& dependency : block.dependencies) {
        std::ranges::for_each(dependency.arguments, add);
        if (dependency.macro) {
            add(*dependency.macro);
        }
    }
}

bool isOutput(const Block& block, std::string_view name) {
    return std::ranges::any_of(block.writes, [name](const Write& write) {
        return write.modifier == "^" && equalsIgnoringCase(write.name.text, name);
    });
}

/// What is read somewhere else than in the block that gives it.
class Readers {
  public:
    explicit Readers(const Checked& checked) : checked_(checked) {
        for (const BlockKind kind : {BlockKind::Profile, BlockKind::Tool}) {
            for (const BlockPlace& place : checked.project.blocks(kind)) {
                addReads(*place.block, ofProject_);
                if (kind == BlockKind::Tool) {
                    addWrites(*place.block);
                }
            }
        }
    }

    /// Whether a tool, a profile or, with `units`, some target reads it.
    bool read(std::string_view name, bool units) {
        if (isDocumented(name) || ofProject_.contains(name)) {
            return true;
        }
        if (units && !ofUnits_) {
            ofUnits_.emplace();
            for (const UnitView& unit : checked_.project.units) {
                for (const Document* document : unit.documents) {
                    forEachBlock(*document, [this](const BlockPlace& place) {
                        addReads(*place.block, *ofUnits_);
                    });
                }
            }
        }
        return units && ofUnits_->contains(name);
    }

  private:
    /// A tool of the project may look at variables of its own.
    void addWrites(const Block& block) {
        for (const Write& write : block.writes) {
            ofProject_.emplace(write.name.text);
        }
    }

    const Checked& checked_;
    Names ofProject_;
    std::optional<Names> ofUnits_;
};

/// The texts of a target that computes its dependencies can name variables.
bool namesInTexts(const BlockPlace& place, const Write& write) {
    const bool computes =
        std::ranges::any_of(place.block->dependencies,
                            [](const DependencySymbol& each) { return each.macro.has_value(); });
    if (!computes) {
        return false;
    }
    const std::string_view text = place.document->textOf(*place.piece);
    std::size_t mentions = 0;
    for (std::size_t at = text.find(write.name.text); at != std::string_view::npos;
         at = text.find(write.name.text, at + 1)) {
        ++mentions;
    }
    return mentions > 1;
}

/// Paths are files that the target reads or makes, whatever their variable is called; a reference
/// may lead to one.
bool mayGivePath(const BlockPlace& place, const Write& write) {
    return std::ranges::any_of(place.piece->tree->tokens, [&write](const SyntaxToken& token) {
        const bool path = token.kind == TokenClass::PathString || token.kind == TokenClass::Name;
        return path && write.value.begin <= token.span.begin && token.span.end <= write.value.end;
    });
}

void checkWrite(const BlockPlace& place, const Write& write, Readers& readers, Diagnostics& found) {
    const std::string& name = write.name.text;
    const bool inProfile = place.block->kind == BlockKind::Profile;
    if (write.nested || !write.modifier.empty() || isOutput(*place.block, name) ||
        readsVariable(*place.block, name) || readers.read(name, inProfile) ||
        mayGivePath(place, write) || namesInTexts(place, write)) {
        return;
    }
    const std::vector<std::string> likely = likelyVariables(name);
    if (likely.empty() && inProfile) {
        return;  // units may be yet to read it
    }
    Diagnostic diagnostic{likely.empty() ? rule::kUnread : rule::kMisspelt,
                          likely.empty() ? Severity::Hint : Severity::Warning,
                          place.piece->inDocument(write.name.span),
                          "Nothing reads the variable '" + name + "'."};
    suggest(diagnostic, likely);
    found.push_back(std::move(diagnostic));
}

}  // namespace

void checkVariables(const Checked& checked, Diagnostics& found) {
    Readers readers(checked);
    forEachBlock(checked.document, [&](const BlockPlace& place) {
        if (place.block->kind == BlockKind::Tool) {
            return;
        }
        for (const Write& write : place.block->writes) {
            checkWrite(place, write, readers, found);
        }
    });
}

}  // namespace Vesk::editor
