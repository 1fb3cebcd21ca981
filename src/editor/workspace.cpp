#include "editor/workspace.h"

#include <algorithm>
#include <exception>
#include <system_error>
#include <utility>

#include "base/ci_string.h"
#include "base/exception.h"
#include "editor/source_files.h"
#include "grammar/source_file.h"
#include "platform/path_key.h"
#include "project/load_project.h"
#include "project/user_data.h"

namespace Vesk::editor {
namespace {

namespace fs = std::filesystem;

fs::path normal(const fs::path& file) {
    return fs::absolute(file).lexically_normal();
}

std::string keyOf(const fs::path& file) {
    return platform::pathKey(normal(file));
}

std::vector<std::string> namesOf(const auto& range, auto nameOf) {
    std::vector<std::string> names;
    std::ranges::transform(range, std::back_inserter(names), nameOf);
    return names;
}

const Symbols* onlySymbols(const Document* document) {
    return document == nullptr ? nullptr : document->pieces().front().symbols.get();
}

}  // namespace

// --- Views ---------------------------------------------------------------------------------------

BlockPlace UnitView::find(const std::string& target) const {
    const auto found = targets.find(target);
    return found == targets.end() ? BlockPlace{} : found->second;
}

std::vector<std::string> UnitView::targetNames() const {
    return namesOf(targets, [](const auto& entry) { return entry.first; });
}

const UnitView* ProjectView::findUnit(std::string_view unitName) const {
    const auto found = std::ranges::find(units, unitName, &UnitView::name);
    return found == units.end() ? nullptr : &*found;
}

const UnitView* ProjectView::unitOf(const Document& document) const {
    const auto found = std::ranges::find_if(units, [&document](const UnitView& unit) {
        return std::ranges::find(unit.documents, &document) != unit.documents.end();
    });
    return found == units.end() ? nullptr : &*found;
}

const ProjectView* ProjectView::findImport(std::string_view projectName) const {
    for (const auto& [alias, project] : imports) {
        if (alias == projectName) {
            return project;
        }
    }
    for (const auto& [alias, project] : imports) {
        if (project->name == projectName) {
            return project;
        }
    }
    return projectName == name ? this : nullptr;
}

std::vector<std::string> ProjectView::unitNames() const {
    return namesOf(units, [](const UnitView& unit) { return unit.name; });
}

std::vector<std::string> ProjectView::importNames() const {
    return namesOf(imports, [](const auto& entry) { return entry.first; });
}

std::vector<BlockPlace> ProjectView::blocks(BlockKind kind) const {
    std::vector<BlockPlace> found;
    if (file == nullptr) {
        return found;
    }
    for (const Piece& piece : file->pieces()) {
        for (const Block& block : piece.symbols->blocks) {
            if (block.kind == kind) {
                found.push_back({file, &piece, &block});
            }
        }
    }
    return found;
}

// --- Texts ---------------------------------------------------------------------------------------

Document& Workspace::open(const fs::path& file, std::string text) {
    const FileKind kind = kindOf(file, text);
    auto made = std::make_unique<Document>(normal(file), kind, std::move(text));
    refresh();
    return *(open_[keyOf(file)] = std::move(made));
}

void Workspace::close(const fs::path& file) {
    open_.erase(keyOf(file));
    refresh();
}

Document* Workspace::opened(const fs::path& file) {
    const auto found = open_.find(keyOf(file));
    return found == open_.end() ? nullptr : found->second.get();
}

std::vector<const Document*> Workspace::openDocuments() const {
    std::vector<const Document*> documents;
    std::ranges::transform(open_, std::back_inserter(documents),
                           [](const auto& entry) { return entry.second.get(); });
    return documents;
}

const Document* Workspace::document(const fs::path& file) {
    const std::string key = keyOf(file);
    if (const auto found = open_.find(key); found != open_.end()) {
        return found->second.get();
    }
    OnDisk& known = onDisk_[key];
    if (known.lookedAt == round_) {
        return known.document.get();
    }
    known.lookedAt = round_;
    const auto status = platform::fileStatus(normal(file));
    const bool same = status && known.document && status->size == known.status.size &&
                      status->modifiedNanoseconds == known.status.modifiedNanoseconds;
    if (same) {
        return known.document.get();
    }
    known.document.reset();
    const SourceFile source(file);
    if (!status || !source.failure().empty()) {
        return nullptr;
    }
    try {
        const std::string text(source.text());
        known.document = std::make_unique<Document>(normal(file), kindOf(file, text), text);
        known.status = *status;
    } catch (const VeskException&) {
        // It is no text: whoever opens it is told.
    }
    return known.document.get();
}

void Workspace::refresh() {
    ++round_;
    projects_.clear();
}

const Registry& Workspace::registry() {
    if (!registry_) {
        registry_.emplace();
        try {
            registry_ = loadRegistry(userDataDirectory() / kRegistryFileName);
        } catch (const VeskException&) {
            // A registry that cannot be read is reported by whoever builds.
        } catch (const std::exception&) {
            // Neither can one whose directory is not known.
        }
    }
    return *registry_;
}

// --- Projects ------------------------------------------------------------------------------------

const ProjectView& Workspace::projectOf(const Document& document) {
    const bool isProject = document.kind() == FileKind::Project;
    const auto file =
        isProject ? std::optional(document.path()) : findProjectFile(document.path().parent_path());
    if (file) {
        const ProjectView* const project = projectAt(*file);
        if (project != nullptr && (isProject || project->unitOf(document) != nullptr)) {
            return *project;
        }
    }
    return standalone(document);
}

const ProjectView& Workspace::standalone(const Document& document) {
    auto& view = projects_[keyOf(document.path())];
    if (!view) {
        view = std::make_unique<ProjectView>();
        view->root = document.path().parent_path();
        UnitView unit;
        unit.name = document.pieces().front().symbols->unit.text;
        if (unit.name.empty()) {
            unit.name = platform::pathToUtf8(document.path().stem());
        }
        view->name = unit.name;
        unit.documents.push_back(&document);
        index(unit);
        view->units.push_back(std::move(unit));
    }
    return *view;
}

const ProjectView* Workspace::projectAt(const fs::path& projectFile) {
    const auto [entry, isNew] = projects_.try_emplace(keyOf(projectFile));
    if (!isNew) {
        return entry->second.get();
    }
    const Document* const file = document(projectFile);
    if (file == nullptr || file->kind() != FileKind::Project) {
        return nullptr;
    }
    entry->second = std::make_unique<ProjectView>();
    ProjectView& view = *entry->second;
    view.file = file;
    view.root = file->path().parent_path();
    view.name = onlySymbols(file)->project.text;
    addUnits(view);
    addImports(view);
    return &view;
}

void Workspace::addUnits(ProjectView& view) {
    for (const UnitSymbol& symbol : onlySymbols(view.file)->units) {
        UnitView unit;
        unit.name = symbol.name.text;
        for (const Name& name : symbol.files) {
            if (const Document* found = document(view.root / platform::pathFromUtf8(name.text))) {
                unit.documents.push_back(found);
            }
        }
        index(unit);
        view.units.push_back(std::move(unit));
    }
}

void Workspace::addImports(ProjectView& view) {
    for (const ImportSymbol& import : onlySymbols(view.file)->imports) {
        const auto file = projectFileOf(import, view.root);
        const ProjectView* const project = file ? projectAt(*file) : nullptr;
        if (project != nullptr) {
            const std::string& given = import.byPath ? import.alias.text : import.location.text;
            view.imports.emplace_back(given.empty() ? project->name : given, project);
        }
    }
}

std::optional<fs::path> Workspace::projectFileOf(const ImportSymbol& import, const fs::path& root) {
    fs::path path;
    if (import.byPath) {
        path = root / platform::pathFromUtf8(import.location.text);
    } else if (registry().projects.contains(import.location.text)) {
        path = registry().findRegisteredProject(import.location.text);
    } else {
        return std::nullopt;
    }
    return platform::isDirectory(path) ? path / kProjectFileName : path;
}

std::vector<const ProjectView*> Workspace::projects() const {
    std::vector<const ProjectView*> views;
    for (const auto& [key, view] : projects_) {
        if (view) {
            views.push_back(view.get());
        }
    }
    return views;
}

void Workspace::index(UnitView& unit) const {
    for (const Document* document : unit.documents) {
        for (const Piece& piece : document->pieces()) {
            for (const Block& block : piece.symbols->blocks) {
                if (block.kind == BlockKind::Target) {
                    unit.targets.try_emplace(block.name.text, BlockPlace{document, &piece, &block});
                }
            }
        }
    }
}

}  // namespace Vesk::editor
