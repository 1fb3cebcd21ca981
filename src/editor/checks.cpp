#include "editor/checks.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/text.h"
#include "editor/names.h"
#include "platform/files.h"

namespace Vesk::editor {
namespace {

std::string placeText(const BlockPlace& place) {
    const std::uint32_t line = place.document->lines().lineOf(place.nameSpan().begin) + 1;
    return fmt::format("{}:{}", platform::pathToUtf8(place.document->path()), line);
}

// --- Dependencies ---

class Dependencies {
  public:
    Dependencies(const Checked& checked, Diagnostics& found) : checked_(checked), found_(found) {}

    void check(const BlockPlace& place, const DependencySymbol& dependency) {
        if (dependency.target.empty()) {
            return;
        }
        const DependencyTarget meant = resolve(dependency, checked_.project, *checked_.unit);
        if (meant.project == nullptr && isImported(dependency.project.text)) {
            return;  // that it cannot be loaded is said of the project file
        }
        if (meant.project == nullptr) {
            unknown(place, dependency.project, "project", checked_.project.importNames());
        } else if (meant.unit == nullptr) {
            unknown(place, dependency.unit, "unit", meant.project->unitNames());
        } else if (!meant.target) {
            unknown(place, dependency.target, "target", meant.unit->targetNames());
        } else {
            count(place, dependency, meant.target);
        }
    }

  private:
    bool isImported(const std::string& name) const {
        if (checked_.project.file == nullptr) {
            return false;
        }
        const auto& imports = checked_.project.file->pieces().front().symbols->imports;
        return std::ranges::any_of(imports, [&name](const ImportSymbol& import) {
            return name == (import.byPath ? import.alias.text : import.location.text);
        });
    }

    void unknown(const BlockPlace& place, const Name& name, std::string_view what,
                 const std::vector<std::string>& candidates) {
        Diagnostic diagnostic{rule::kUnknown, Severity::Error, place.piece->inDocument(name.span),
                              fmt::format("There is no {} '{}'.", what, name.text)};
        suggest(diagnostic, nearest(name.text, candidates));
        found_.push_back(std::move(diagnostic));
    }

    void count(const BlockPlace& place, const DependencySymbol& dependency,
               const BlockPlace& target) {
        const std::size_t wanted = target.block->parameters.size();
        if (dependency.argumentCount == wanted) {
            return;
        }
        Diagnostic diagnostic{rule::kArguments, Severity::Error,
                              place.piece->inDocument(dependency.span),
                              fmt::format("'{}' takes {}, and is given {}.", dependency.target.text,
                                          counted(wanted, "argument"), dependency.argumentCount)};
        diagnostic.notes.push_back("it is written at " + placeText(target));
        found_.push_back(std::move(diagnostic));
    }

    const Checked& checked_;
    Diagnostics& found_;
};

/// Outputs that no dependant sees. A path may be written for what is made.
void checkOutputs(const BlockPlace& place, const Matcher& tool, Diagnostics& found) {
    const std::string& type = tool.typeWord();
    const bool writesFile = type == "file_writer";
    if (!writesFile && type != "no_tool") {
        return;
    }
    for (const Write& write : place.block->writes) {
        const std::string_view value = write.value.of(place.document->textOf(*place.piece));
        const bool isFile = writesFile && write.op == "=" && value.starts_with("P\"");
        const bool isGiven = writesFile && equalsIgnoringCase(write.name.text, "TEXT");
        if (write.nested || write.modifier != "^" || isFile || isGiven) {
            continue;
        }
        found.push_back(
            {rule::kDropped,
             Severity::Hint,
             place.piece->inDocument(write.name.span),
             fmt::format("No dependant sees the output '{}'.", write.name.text),
             {writesFile ? "the file writer gives only FILE and TEXT; a target with cmdline = [] "
                           "that depends on this one gives anything"
                         : "a target without a tool has no outputs; with cmdline = [] in place of "
                           "NO_TOOL it has"}});
    }
}

std::string_view kindName(BlockKind kind) {
    switch (kind) {
        case BlockKind::Profile:
            return "profile";
        case BlockKind::Tool:
            return "tool";
        case BlockKind::Target:
            break;
    }
    return "target";
}

}  // namespace

void checkSyntax(const Checked& checked, Diagnostics& found) {
    bool first = true;
    for (const Piece& piece : checked.document.pieces()) {
        for (const SyntaxError& error : piece.tree->errors) {
            found.push_back(
                {rule::kSyntax, Severity::Error, piece.inDocument(error.span), error.message,
                 error.hint.empty() ? std::vector<std::string>{} : std::vector{error.hint}});
        }
        if (!first && !piece.symbols->unit.empty()) {
            found.push_back({rule::kSyntax, Severity::Error,
                             piece.inDocument(piece.symbols->unit.span),
                             "The unit's name stands before its targets, once."});
        }
        first = false;
    }
}

void checkDependencies(const Checked& checked, Diagnostics& found) {
    if (checked.unit == nullptr) {
        return;
    }
    Dependencies dependencies(checked, found);
    forEachBlock(checked.document, [&](const BlockPlace& place) {
        for (const DependencySymbol& dependency : place.block->dependencies) {
            dependencies.check(place, dependency);
        }
    });
}

void checkDuplicates(const Checked& checked, Diagnostics& found) {
    std::unordered_map<std::string, BlockPlace> seen;
    forEachBlock(checked.document, [&](const BlockPlace& place) {
        const Name& name = place.block->name;
        const bool isTarget = place.block->kind == BlockKind::Target;
        BlockPlace first;
        if (isTarget && checked.unit != nullptr) {
            first = checked.unit->find(name.text);
        } else {
            const std::string key =
                std::string(kindName(place.block->kind)) + lowerCased(name.text);
            first = seen.try_emplace(key, place).first->second;
        }
        if (first && first.block != place.block) {
            found.push_back(
                {rule::kDuplicate,
                 Severity::Error,
                 place.nameSpan(),
                 fmt::format("There is a {} '{}' already.", kindName(place.block->kind), name.text),
                 {"the first is at " + placeText(first)}});
        }
    });
}

void checkTools(const Checked& checked, Diagnostics& found) {
    if (checked.unit == nullptr) {
        return;
    }
    forEachBlock(checked.document, [&](const BlockPlace& place) {
        const Outlook& outlook = checked.evaluation.outlookFor(place);
        if (outlook.tool != nullptr) {
            checkOutputs(place, *outlook.tool, found);
        }
        if (outlook.failure.empty()) {
            return;
        }
        const bool noTool = outlook.target != nullptr;
        if (noTool && !place.block->parameters.empty()) {
            return;  // what it is given may decide
        }
        // Whether there is a compiler is the machine's affair, not the text's.
        found.push_back({noTool ? rule::kNoTool : rule::kValue,
                         outlook.needsToolchain ? Severity::Warning : Severity::Error,
                         place.nameSpan(), outlook.failure + (noTool ? "." : ""), outlook.notes});
    });
}

Diagnostics diagnose(Workspace& workspace, Evaluations& evaluations, const Document& document) {
    const ProjectView& project = workspace.projectOf(document);
    const UnitView* const unit =
        document.kind() == FileKind::Unit ? project.unitOf(document) : nullptr;
    const Checked checked{document, project, unit, evaluations.of(workspace, project)};
    Diagnostics found;
    for (const auto check : {checkSyntax, checkDependencies, checkDuplicates, checkCycles,
                             checkVariables, checkTools, checkProjectFile}) {
        check(checked, found);
    }
    std::ranges::stable_sort(found, {}, [](const Diagnostic& each) { return each.span.begin; });
    return found;
}

}  // namespace Vesk::editor
