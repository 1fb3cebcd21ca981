#include "editor/features/outline.h"

#include <algorithm>

#include "base/ci_string.h"
#include "base/text.h"
#include "editor/checks.h"
#include "editor/features/completion.h"
#include "platform/files.h"

namespace Vesk::editor {
namespace {

OutlineKind kindOfBlock(BlockKind kind) {
    switch (kind) {
        case BlockKind::Profile:
            return OutlineKind::Profile;
        case BlockKind::Tool:
            return OutlineKind::Tool;
        case BlockKind::Target:
            break;
    }
    return OutlineKind::Target;
}

OutlineItem itemOf(const Piece& piece, const Block& block) {
    std::vector<std::string> dependencies;
    for (const DependencySymbol& dependency : block.dependencies) {
        dependencies.push_back(dependency.target.text);
    }
    OutlineItem item{kindOfBlock(block.kind),           signatureOf(block),
                     joined(dependencies, " "),         piece.inDocument(block.span),
                     piece.inDocument(block.name.span), {}};
    for (const Write& write : block.writes) {
        if (!write.nested && write.modifier == "^") {
            item.children.push_back({OutlineKind::Output,
                                     write.name.text,
                                     {},
                                     piece.inDocument(write.span),
                                     piece.inDocument(write.name.span),
                                     {}});
        }
    }
    return item;
}

OutlineItem itemOf(const Piece& piece, const UnitSymbol& unit) {
    OutlineItem item{OutlineKind::Unit,
                     unit.name.text,
                     {},
                     piece.inDocument(unit.span),
                     piece.inDocument(unit.name.span),
                     {}};
    for (const Name& file : unit.files) {
        item.children.push_back({OutlineKind::File,
                                 file.text,
                                 {},
                                 piece.inDocument(file.span),
                                 piece.inDocument(file.span),
                                 {}});
    }
    return item;
}

bool isLike(std::string_view name, std::string_view query) {
    std::size_t at = 0;
    for (const char c : name) {
        at += at < query.size() && asciiLower(c) == asciiLower(query[at]) ? 1 : 0;
    }
    return at == query.size();
}

class Folder {
  public:
    explicit Folder(const Document& document) : document_(document) {}

    std::vector<Fold> run() {
        for (const Piece& piece : document_.pieces()) {
            piece_ = &piece;
            node(piece.tree->root);
            comments(piece.tree->tokens);
        }
        std::ranges::sort(
            folds_, {}, [](const Fold& fold) { return std::pair(fold.firstLine, fold.lastLine); });
        return std::move(folds_);
    }

  private:
    std::uint32_t lineOf(std::uint32_t inPiece) const {
        return document_.lines().lineOf(piece_->span.begin + inPiece);
    }

    void add(std::uint32_t begin, std::uint32_t end, bool comment) {
        const std::uint32_t first = lineOf(begin);
        const std::uint32_t last = lineOf(end);
        if (first < last) {
            folds_.push_back({first, last, comment});
        }
    }

    void node(const SyntaxNode& node) {
        const auto& tokens = piece_->tree->tokens;
        const bool folds = node.rule == SyntaxRule::Context || node.rule == SyntaxRule::List ||
                           node.rule == SyntaxRule::Imports || node.rule == SyntaxRule::Tools ||
                           node.rule == SyntaxRule::Units || node.rule == SyntaxRule::Profiles;
        if (folds && !node.isEmpty()) {
            add(tokens[node.first].span.begin, tokens[node.end - 1].span.begin, false);
        }
        for (const SyntaxNode& child : node.children) {
            this->node(child);
        }
    }

    /// Line comments in lines one after the other are folded as one.
    void comments(const std::vector<SyntaxToken>& tokens) {
        for (std::size_t first = 0; first < tokens.size();) {
            std::size_t end = first + 1;
            if (tokens[first].isComment()) {
                while (end < tokens.size() && tokens[end].kind == TokenClass::LineComment &&
                       lineOf(tokens[end].span.begin) == lineOf(tokens[end - 1].span.end) + 1) {
                    ++end;
                }
                add(tokens[first].span.begin, tokens[end - 1].span.end, true);
            }
            first = end;
        }
    }

    const Document& document_;
    const Piece* piece_ = nullptr;
    std::vector<Fold> folds_;
};

}  // namespace

std::vector<OutlineItem> outlineOf(const Document& document) {
    std::vector<OutlineItem> items;
    for (const Piece& piece : document.pieces()) {
        for (const UnitSymbol& unit : piece.symbols->units) {
            items.push_back(itemOf(piece, unit));
        }
        for (const Block& block : piece.symbols->blocks) {
            items.push_back(itemOf(piece, block));
        }
    }
    return items;
}

std::vector<FoundTarget> targetsLike(const Workspace& workspace, std::string_view query) {
    std::vector<FoundTarget> found;
    for (const ProjectView* project : workspace.projects()) {
        for (const UnitView& unit : project->units) {
            for (const auto& [name, place] : unit.targets) {
                if (isLike(name, query)) {
                    found.push_back({place, unit.name, project->name});
                }
            }
        }
    }
    std::ranges::sort(found, {}, [](const FoundTarget& each) {
        return std::pair(each.place.document->path(), each.place.nameSpan().begin);
    });
    return found;
}

std::vector<Fold> foldsOf(const Document& document) {
    return Folder(document).run();
}

std::vector<Lens> lensesOf(Workspace& workspace, const Document& document) {
    std::vector<Lens> lenses;
    const ProjectView& project = workspace.projectOf(document);
    const UnitView* const unit = project.unitOf(document);
    if (unit == nullptr) {
        return lenses;
    }
    const bool alone = project.file == nullptr;
    forEachBlock(document, [&](const BlockPlace& place) {
        if (place.block->kind == BlockKind::Target && place.block->parameters.empty()) {
            lenses.push_back({place.nameSpan(), unit->name + "::" + place.block->name.text,
                              platform::pathToUtf8(project.root),
                              alone ? platform::pathToUtf8(document.path()) : std::string()});
        }
    });
    return lenses;
}

}  // namespace Vesk::editor
