#include "project/load_units.h"

#include "base/exception.h"
#include "grammar/loaders.h"
#include "platform/files.h"
#include "project/project_paths.h"

namespace Vesk {
namespace {

namespace fs = std::filesystem;

void requireFiles(const ProjectFile& file) {
    if (file.units.empty()) {
        VeskException error("Project '" + file.name + "' does not list any units.");
        error.addNote("in " + platform::pathToUtf8(file.path));
        throw error;
    }
    for (const UnitEntry& entry : file.units) {
        if (entry.files.empty()) {
            VeskException error("Project unit '" + entry.name + "' has no files.");
            error.addNote("in " + placeOf(file.path, entry.line));
            throw error;
        }
    }
}

Unit readUnitFile(const fs::path& path, const UnitEntry& entry, UnitOutlines* outlines) {
    Unit unit = parseUnitFile(path, outlines);
    if (unit.nameDeclared && unit.name != entry.name) {
        throw VeskException("Unit name mismatch in " + platform::pathToUtf8(path) + ": expected '" +
                            entry.name + "'.");
    }
    return unit;
}

void addFile(Unit& unit, Unit fromFile) {
    unit.nameDeclared = unit.nameDeclared || fromFile.nameDeclared;
    unit.files.insert(unit.files.end(), fromFile.files.begin(), fromFile.files.end());
    for (auto& target : fromFile.targets) {
        unit.addTarget(std::move(target));
    }
}

std::shared_ptr<const Unit> readUnit(const ProjectFile& file, const UnitEntry& entry,
                                     UnitOutlines* outlines) {
    const fs::path directory = file.path.parent_path();
    std::shared_ptr<Unit> unit;
    for (const std::string& listed : entry.files) {
        Unit next = readUnitFile(pathWrittenIn(directory, listed), entry, outlines);
        if (unit) {
            addFile(*unit, std::move(next));
        } else {
            unit = std::make_shared<Unit>(std::move(next));
            unit->name = entry.name;
        }
    }
    return unit;
}

}  // namespace

void loadUnits(Project& project, const ProjectFile& file, UnitOutlines* outlines) {
    requireFiles(file);
    for (const UnitEntry& entry : file.units) {
        try {
            project.addUnit(readUnit(file, entry, outlines));
        } catch (...) {
            rethrowWithNote("unit '" + entry.name + "' is listed in " +
                            placeOf(file.path, entry.line));
        }
    }
}

}  // namespace Vesk
