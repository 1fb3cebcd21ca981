// A loaded project: what its files say, after checking, and the projects it imports.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "grammar/model.h"
#include "types/model/target.h"

namespace Vesk {

inline constexpr const char* kProjectFileName = ".vesk_project.txt";
inline constexpr const char* kUnitFileName = "vesk.txt";
inline constexpr const char* kDefaultProfile = "default";  ///< applies to every load of its project
inline constexpr const char* kMainUnitAlias = "1";         ///< stands for the main unit

class Project;

struct ImportedProject {
    std::string alias;  ///< the name that the importing project's units use
    const Project* project = nullptr;
};

/// A project under one profile. A standalone unit file, which belongs to no project file, is a
/// project of one unit, so that everything above deals with one kind.
///
/// Made by a ProjectLoader, owned by the ProjectStore, which keeps its address for the whole run.
class Project {
  public:
    std::filesystem::path file;                  ///< weakly canonical; empty for a standalone unit
    ContentHash hash;                            ///< of the file's text
    std::filesystem::path root;                  ///< the directory that relative paths start from
    std::string name;                            ///< a standalone unit's: the unit's name
    std::string profile;                         ///< spelled as it is defined; empty without one
    std::vector<ProjectImport> declaredImports;  ///< all, whatever profile they apply to
    std::vector<ToolEntry> tools;                ///< of known type, one for each name
    std::vector<ProfileEntry> profiles;          ///< in the file's order

    bool standalone() const noexcept { return file.empty(); }

    /// "project 'lib' (/ws/lib/.vesk_project.txt) with profile 'debug'", for messages.
    std::string description() const;

    /// Throws VeskException "Duplicate unit '...'." for a second one of that name.
    void addUnit(std::shared_ptr<const Unit> unit);

    const std::vector<std::shared_ptr<const Unit>>& units() const noexcept { return units_; }

    /// The first listed unit, which every loaded project has.
    const std::shared_ptr<const Unit>& mainUnit() const { return units_.front(); }

    /// Null when there is none. An empty name and "1" give the main unit.
    std::shared_ptr<const Unit> findUnit(std::string_view unitName) const;
    std::vector<std::string> unitNames() const;

    /// Names compare without regard to case; null when there is none.
    const ProfileEntry* findProfile(std::string_view profileName) const;

    /// Sorted, spelled as they are defined.
    std::vector<std::string> profileNames() const;

    /// False, and nothing changed, when another import has that alias.
    bool addImport(std::string alias, const Project& project);

    /// The imports that apply under this profile, in the file's order.
    const std::vector<ImportedProject>& imports() const noexcept { return imports_; }

    /// The project that a reference in this project's units calls `projectName`: an alias first,
    /// else an imported project's own name or this one's. Null when there is none.
    const Project* findImport(std::string_view projectName) const;

    /// Every name that findImport knows, for suggestions.
    std::vector<std::string> importNames() const;

  private:
    std::vector<std::shared_ptr<const Unit>> units_;
    std::unordered_map<std::string_view, std::size_t> unitIndex_;  ///< names live in the units
    std::vector<ImportedProject> imports_;
    std::unordered_map<std::string, const Project*> importsByAlias_;
    std::unordered_map<std::string, const Project*> importsByName_;
};

}  // namespace Vesk
