#include "project/create_project.h"

#include <optional>

#include "base/attempt.h"
#include "base/console.h"
#include "base/report.h"
#include "grammar/identifier.h"
#include "grammar/loaders.h"
#include "platform/files.h"
#include "project/project.h"
#include "project/project_paths.h"
#include "project/unit_file_walk.h"

namespace Vesk {
namespace {

namespace fs = std::filesystem;

/// A unit file as it will be listed.
struct FoundFile {
    std::string listed;        ///< relative to the project file, with slashes
    fs::path directory;        ///< relative to the root; empty for the root itself
    std::optional<Unit> unit;  ///< nothing when the file has errors
};

/// Relative where there is such a path: between two drives there is none.
fs::path relativePath(const fs::path& file, const fs::path& directory) {
    fs::path relative = file.lexically_relative(directory);
    return relative.empty() ? file : relative;
}

class ProjectDescriber {
  public:
    ProjectDescriber(fs::path root, fs::path directory)
        : root_(std::move(root)), directory_(std::move(directory)) {
        const std::string name = platform::pathToUtf8(root_.filename());
        project_.name = name.empty() ? "project" : identifierFrom(name);
    }

    /// Of two files that want one name, the first gets it; but names that files declare are fixed,
    /// and the others make way for them.
    NewProject describe(const std::vector<fs::path>& files) {
        std::vector<FoundFile> undeclared;
        for (const fs::path& file : files) {
            FoundFile found = read(file);
            if (found.listed.find('"') != std::string::npos) {
                leaveOut(found, "its path has a double quote, which a project file cannot hold");
            } else if (found.unit && found.unit->nameDeclared) {
                addDeclared(found);
            } else {
                undeclared.push_back(std::move(found));
            }
        }
        for (const FoundFile& found : undeclared) {
            project_.units[freeName(found)].push_back(found.listed);
        }
        return std::move(project_);
    }

  private:
    FoundFile read(const fs::path& file) const {
        FoundFile found;
        found.listed = genericText(relativePath(file, directory_));
        found.directory = file.lexically_relative(root_).parent_path();
        if (const auto error = failureOf([&] { found.unit = parseUnitFile(file); })) {
            reportWarning("Unit file '" + found.listed + "' is listed, but it has errors.",
                          {*error});
        }
        return found;
    }

    static std::string genericText(const fs::path& path) {
        const auto text = path.generic_u8string();
        return {text.begin(), text.end()};
    }

    static void leaveOut(const FoundFile& found, const std::string& why) {
        console::warning("Unit file '{}' is left out: {}.", found.listed, why);
    }

    /// Files that declare one name make one unit, as long as their targets differ.
    void addDeclared(const FoundFile& found) {
        const Unit& unit = *found.unit;
        auto& targets = targets_[unit.name];
        for (const auto& target : unit.targets) {
            const auto known = targets.find(target->name);
            if (known != targets.end()) {
                leaveOut(found, "unit '" + unit.name + "' already has a target '" + target->name +
                                    "' in '" + known->second +
                                    "'; give one of the two units another name");
                return;
            }
        }
        for (const auto& target : unit.targets) {
            targets.emplace(target->name, found.listed);
        }
        project_.units[unit.name].push_back(found.listed);
    }

    /// After the directory, or more of the path where that name is taken.
    std::string freeName(const FoundFile& found) const {
        std::string wanted = project_.name;
        std::string path;
        for (auto part = found.directory.end(); part != found.directory.begin();) {
            path = genericText(*--part) + (path.empty() ? "" : "_") + path;
            wanted = identifierFrom(path);
            if (!project_.units.contains(wanted)) {
                return wanted;
            }
        }
        std::string name = wanted;
        for (int number = 2; project_.units.contains(name); ++number) {
            name = wanted + "_" + std::to_string(number);
        }
        return name;
    }

    fs::path root_;
    fs::path directory_;  ///< of the project file
    NewProject project_;
    std::map<std::string, std::map<std::string, std::string>> targets_;  ///< by unit: target, file
};

std::string projectText(const NewProject& project) {
    std::string text = "name " + project.name + "\nunits\n{\n";
    for (const auto& [name, files] : project.units) {
        if (name.empty()) {
            continue;
        }
        text += name + "\n{\n";
        for (const std::string& file : files) {
            text += "  \"" + file + "\"\n";
        }
        text += "}\n";
    }
    return text + "}\n";
}

fs::path freeBackupName(const fs::path& file) {
    fs::path backup = file;
    backup += ".bak";
    std::error_code ignored;
    for (int number = 2; platform::exists(backup, ignored); ++number) {
        backup = file;
        backup += ".bak" + std::to_string(number);
    }
    return backup;
}

/// Copies the old file, if there is one, to a name beside it. False and `error` set on failure.
bool keepOldFile(const fs::path& file, std::error_code& error) {
    if (!platform::exists(file, error)) {
        return !error;
    }
    const fs::path backup = freeBackupName(file);
    if (!platform::copyFile(file, backup, error)) {
        std::error_code ignored;
        platform::removeFile(backup, ignored);
        return false;
    }
    console::normal("The old project file is kept as '{}'.", platform::pathToUtf8(backup));
    return true;
}

}  // namespace

NewProject describeNewProject(const fs::path& root, const fs::path& directory) {
    const fs::path canonical = canonicalPath(root);
    NewProject project =
        ProjectDescriber(canonical, canonicalPath(directory)).describe(findUnitFiles(canonical));
    if (project.units.empty()) {
        console::warning("No unit files ('{}') were found under '{}': the project lists no units.",
                         kUnitFileName, platform::pathToUtf8(canonical));
    }
    return project;
}

fs::path createProjectFile(const NewProject& project, const fs::path& directory) {
    fs::path file = directory / kProjectFileName;
    fs::path temporary = file;
    temporary += ".tmp";
    std::error_code error;
    if (!platform::writeWholeFile(temporary, projectText(project), platform::Append::no, error) ||
        !keepOldFile(file, error) || !platform::replaceFile(temporary, file, error)) {
        std::error_code ignored;
        platform::removeFile(temporary, ignored);
        VeskException failure("Unable to write project file: " + platform::pathToUtf8(file));
        failure.addNote(error.message());
        throw failure;
    }
    console::normal("Created file '{}'.", platform::pathToUtf8(file));
    return file;
}

}  // namespace Vesk
