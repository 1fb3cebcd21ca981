#include "editor/source_files.h"

#include <algorithm>

#include "base/ci_string.h"
#include "editor/workspace.h"
#include "platform/files.h"
#include "project/load_project.h"
#include "project/registry.h"

namespace Vesk::editor {

namespace fs = std::filesystem;

FileKind kindOf(const fs::path& file, std::string_view text) {
    const std::string name = platform::pathToUtf8(file.filename());
    if (equalsIgnoringCase(name, kProjectFileName)) {
        return FileKind::Project;
    }
    if (equalsIgnoringCase(name, kRegistryFileName)) {
        return FileKind::Registry;
    }
    return equalsIgnoringCase(name, kUnitFileName) ? FileKind::Unit : kindOfText(text);
}

namespace {

/// As somebody in the current directory would name it.
fs::path shown(const fs::path& file) {
    fs::path relative = file.lexically_normal().lexically_relative(fs::current_path());
    return relative.empty() ? file : relative;
}

}  // namespace

std::vector<fs::path> filesNamed(Workspace& workspace, const std::vector<std::string>& words,
                                 const fs::path& unitFile) {
    std::vector<fs::path> files;
    std::ranges::transform(words, std::back_inserter(files),
                           [](const std::string& word) { return platform::pathFromUtf8(word); });
    if (!files.empty()) {
        return files;
    }
    const auto project = findProjectFile(fs::current_path());
    if (!project) {
        return {unitFile};
    }
    files.push_back(shown(*project));
    if (const Document* const document = workspace.document(*project)) {
        for (const UnitSymbol& unit : document->pieces().front().symbols->units) {
            for (const Name& file : unit.files) {
                files.push_back(shown(project->parent_path() / platform::pathFromUtf8(file.text)));
            }
        }
    }
    return files;
}

}  // namespace Vesk::editor
