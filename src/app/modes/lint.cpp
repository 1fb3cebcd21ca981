#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <string>
#include <system_error>
#include <vector>

#include "app/modes/modes.h"
#include "app/version.h"
#include "base/console.h"
#include "base/exception.h"
#include "base/source_place.h"
#include "editor/checks.h"
#include "editor/sarif.h"
#include "editor/source_files.h"
#include "grammar/source_file.h"
#include "platform/files.h"

namespace Vesk::modes {
namespace {

namespace fs = std::filesystem;

/// As compilers write it: "vesk.txt:3:8: error: There is no target 'x'. [unknown-name]", then the
/// line with a caret, and the notes.
void print(const editor::FileFindings& file, const editor::Diagnostic& diagnostic) {
    const editor::Document& document = *file.document;
    const editor::LinePlace place = document.lines().placeOf(document.text(), diagnostic.span.begin,
                                                             editor::ColumnUnit::CodePoints);
    console::writeAnswer(fmt::format("{}:{}:{}: {}: {} [{}]", file.name, place.line + 1,
                                     place.column + 1, editor::levelOf(diagnostic.severity),
                                     diagnostic.message, diagnostic.rule));
    const std::vector<std::string> lines =
        placeLines(file.name, document.text(), place.line + 1, place.column + 1);
    for (std::size_t line = 1; line < lines.size(); ++line) {
        console::writeAnswer("  " + lines[line]);
    }
    for (const std::string& note : diagnostic.notes) {
        console::writeAnswer("  " + note);
    }
}

const editor::Document& read(editor::Workspace& workspace, const fs::path& path) {
    if (const editor::Document* const document = workspace.document(path)) {
        return *document;
    }
    const SourceFile file(path);
    if (file.failure().empty()) {
        static_cast<void>(file.text());  // throws: it is not a text file
    }
    throw VeskException("Unable to read " + file.name() + ": " + file.failure());
}

bool isFailure(const editor::Diagnostic& diagnostic, Doubts doubts) {
    return diagnostic.severity == editor::Severity::Error ||
           (diagnostic.severity == editor::Severity::Warning && doubts == Doubts::Refuse);
}

void write(const std::string& file, const std::string& text) {
    std::error_code error;
    if (!platform::writeWholeFile(platform::pathFromUtf8(file), text, platform::Append::no,
                                  error)) {
        throw VeskException("Unable to write " + file + ": " + error.message());
    }
}

}  // namespace

int lint(const Settings& settings) {
    editor::Workspace workspace;
    editor::Evaluations evaluations;
    std::vector<editor::FileFindings> files;
    bool failed = false;
    for (const fs::path& path :
         editor::filesNamed(workspace, settings.positionals, settings.unitFile)) {
        const editor::Document& document = read(workspace, path);
        files.push_back({platform::pathToUtf8(path), &document,
                         editor::diagnose(workspace, evaluations, document)});
        for (const editor::Diagnostic& diagnostic : files.back().found) {
            print(files.back(), diagnostic);
            failed = failed || isFailure(diagnostic, settings.doubts);
        }
    }
    if (!settings.sarif.empty()) {
        write(settings.sarif, editor::sarifReport(files, kVersion));
    }
    return failed ? 1 : 0;
}

}  // namespace Vesk::modes
