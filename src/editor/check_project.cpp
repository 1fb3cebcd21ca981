#include <fmt/format.h>

#include "base/ci_string.h"
#include "editor/checks.h"
#include "editor/names.h"
#include "platform/files.h"
#include "project/project.h"

namespace Vesk::editor {
namespace {

std::vector<std::string> profileNames(const ProjectView& project) {
    std::vector<std::string> names;
    for (const BlockPlace& place : project.blocks(BlockKind::Profile)) {
        names.push_back(place.block->name.text);
    }
    return names;
}

class ProjectCheck {
  public:
    ProjectCheck(const Checked& checked, Diagnostics& found)
        : checked_(checked), piece_(checked.document.pieces().front()), found_(found) {}

    void check(const UnitSymbol& unit) {
        for (const Name& file : unit.files) {
            const auto path = checked_.project.root / platform::pathFromUtf8(file.text);
            if (!platform::isFile(path)) {
                add(rule::kMissingFile, file.span, "There is no file '" + file.text + "'.");
            }
        }
    }

    void check(const ImportSymbol& import) {
        profile(import.sourceProfile, checked_.project);
        const auto path = checked_.project.root / platform::pathFromUtf8(import.location.text);
        if (import.byPath && !platform::isFile(path) &&
            !platform::isFile(path / kProjectFileName)) {
            add(rule::kMissingFile, import.location.span,
                "There is no project in '" + import.location.text + "'.");
            return;
        }
        const std::string& given = import.byPath ? import.alias.text : import.location.text;
        const ProjectView* const imported = checked_.project.findImport(given);
        if (!import.byPath && imported == nullptr) {
            add(rule::kUnknown, import.location.span,
                "There is no registered project '" + import.location.text +
                    "'; vesk -r registers the one of the current directory.");
        }
        if (imported != nullptr && imported != &checked_.project) {
            profile(import.importedProfile, *imported);
        }
    }

  private:
    void profile(const Name& name, const ProjectView& project) {
        if (name.empty()) {
            return;
        }
        const std::vector<std::string> known = profileNames(project);
        for (const std::string& each : known) {
            if (equalsIgnoringCase(each, name.text)) {
                return;
            }
        }
        Diagnostic& diagnostic =
            add(rule::kUnknown, name.span,
                fmt::format("Project '{}' has no profile '{}'.", project.name, name.text));
        suggest(diagnostic, nearest(name.text, known));
    }

    Diagnostic& add(std::string_view rule, TextSpan span, std::string message) {
        return found_.emplace_back(
            Diagnostic{rule, Severity::Error, piece_.inDocument(span), std::move(message)});
    }

    const Checked& checked_;
    const Piece& piece_;
    Diagnostics& found_;
};

}  // namespace

void checkProjectFile(const Checked& checked, Diagnostics& found) {
    if (checked.document.kind() != FileKind::Project) {
        return;
    }
    ProjectCheck check(checked, found);
    const Symbols& symbols = *checked.document.pieces().front().symbols;
    for (const UnitSymbol& unit : symbols.units) {
        check.check(unit);
    }
    for (const ImportSymbol& import : symbols.imports) {
        check.check(import);
    }
}

}  // namespace Vesk::editor
