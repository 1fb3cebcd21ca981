// What is wrong with a document, as far as it can be told without building.
#pragma once

#include <vector>

#include "editor/diagnostic.h"
#include "editor/evaluation.h"
#include "editor/workspace.h"

namespace Vesk::editor {

/// What checks look at.
struct Checked {
    const Document& document;
    const ProjectView& project;
    const UnitView* unit;  ///< that the document belongs to; null for a project or registry file
    Evaluation& evaluation;
};

using Diagnostics = std::vector<Diagnostic>;

/// All checks, the findings in the order of their places.
Diagnostics diagnose(Workspace& workspace, Evaluations& evaluations, const Document& document);

/// Calls `use` with each target of a document, and where it is.
template <class Use>
void forEachBlock(const Document& document, Use use) {
    for (const Piece& piece : document.pieces()) {
        for (const Block& block : piece.symbols->blocks) {
            use(BlockPlace{&document, &piece, &block});
        }
    }
}

void checkSyntax(const Checked& checked, Diagnostics& found);
void checkDependencies(const Checked& checked, Diagnostics& found);
void checkDuplicates(const Checked& checked, Diagnostics& found);
void checkCycles(const Checked& checked, Diagnostics& found);
void checkVariables(const Checked& checked, Diagnostics& found);
void checkTools(const Checked& checked, Diagnostics& found);
void checkProjectFile(const Checked& checked, Diagnostics& found);

}  // namespace Vesk::editor
