#include "editor/format.h"

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "app/modes/modes.h"
#include "app/project_root.h"
#include "base/console.h"
#include "base/exception.h"
#include "base/text.h"
#include "editor/line_index.h"
#include "editor/source_files.h"
#include "editor/workspace.h"
#include "grammar/source_file.h"
#include "platform/files.h"

namespace Vesk::modes {
namespace {

namespace fs = std::filesystem;

/// In one step, so that an interruption leaves the one text or the other.
void replaceText(const fs::path& file, const std::string& text) {
    std::error_code error;
    const fs::path real = platform::canonicalPath(file, error);
    fs::path temporary = real;
    temporary += ".new";
    if (!platform::writeWholeFile(temporary, text, platform::Append::no, error)) {
        throw VeskException("Unable to write " + platform::pathToUtf8(temporary) + ": " +
                            error.message());
    }
    platform::copyPermissions(real, temporary);
    if (!platform::replaceFile(temporary, real, error)) {
        std::error_code ignored;
        platform::removeFile(temporary, ignored);
        throw VeskException("Unable to replace " + platform::pathToUtf8(real) + ": " +
                            error.message());
    }
}

std::vector<std::string> notesOf(const SourceFile& file, const SyntaxError& error) {
    const editor::LinePlace place =
        editor::LineIndex(file.text())
            .placeOf(file.text(), error.span.begin, editor::ColumnUnit::CodePoints);
    std::vector<std::string> notes =
        placeLines(file.name(), file.text(), place.line + 1, place.column + 1);
    notes.push_back(error.message);
    notes.push_back(error.hint);
    return notes;
}

class Formatting {
  public:
    explicit Formatting(bool onlyCheck) : onlyCheck_(onlyCheck) {}

    void run(const fs::path& path) {
        const SourceFile file(path);
        if (!file.failure().empty()) {
            throw VeskException("Unable to read " + file.name() + ": " + file.failure());
        }
        const auto result = editor::formatText(file.bytes(), editor::kindOf(path, file.text()));
        if (!result.errors.empty()) {
            failed_ = true;
            console::write(console::level::kError, console::colour::kError,
                           "Error: " + file.name() + " has syntax errors and stays as it is.",
                           notesOf(file, result.errors.front()));
        } else if (result.text != file.bytes()) {
            change(path, result.text);
        }
    }

    int status() const { return failed_ ? 1 : 0; }

  private:
    void change(const fs::path& path, const std::string& text) {
        console::writeAnswer(platform::pathToUtf8(path));
        if (onlyCheck_) {
            failed_ = true;
        } else {
            replaceText(path, text);
        }
    }

    bool onlyCheck_;
    bool failed_ = false;
};

}  // namespace

int format(const Settings& settings) {
    Formatting formatting(settings.onlyCheckFormat);
    editor::Workspace workspace;
    for (const fs::path& file :
         editor::filesNamed(workspace, settings.positionals, settings.unitFile)) {
        formatting.run(file);
    }
    return formatting.status();
}

}  // namespace Vesk::modes
