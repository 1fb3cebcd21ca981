#include "project/project.h"

#include <algorithm>

#include "base/ci_string.h"
#include "base/exception.h"
#include "platform/files.h"

namespace Vesk {

std::string Project::description() const {
    std::string text = "project '" + name + "'";
    if (!standalone()) {
        text += " (" + platform::pathToUtf8(file) + ")";
    }
    return text + (profile.empty() ? " without a profile" : " with profile '" + profile + "'");
}

void Project::addUnit(std::shared_ptr<const Unit> unit) {
    if (!unitIndex_.emplace(unit->name, units_.size()).second) {
        throw VeskException("Duplicate unit '" + unit->name + "'.");
    }
    units_.push_back(std::move(unit));
}

std::shared_ptr<const Unit> Project::findUnit(std::string_view unitName) const {
    if (unitName.empty() || unitName == kMainUnitAlias) {
        return units_.empty() ? nullptr : units_.front();
    }
    const auto found = unitIndex_.find(unitName);
    return found == unitIndex_.end() ? nullptr : units_[found->second];
}

std::vector<std::string> Project::unitNames() const {
    std::vector<std::string> names;
    names.reserve(units_.size());
    for (const auto& unit : units_) {
        names.push_back(unit->name);
    }
    return names;
}

const ProfileEntry* Project::findProfile(std::string_view profileName) const {
    const auto found = std::find_if(profiles.begin(), profiles.end(), [&](const auto& entry) {
        return equalsIgnoringCase(entry.name, profileName);
    });
    return found == profiles.end() ? nullptr : &*found;
}

std::vector<std::string> Project::profileNames() const {
    std::vector<std::string> names;
    names.reserve(profiles.size());
    for (const ProfileEntry& entry : profiles) {
        names.push_back(entry.name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

bool Project::addImport(std::string alias, const Project& project) {
    if (!importsByAlias_.emplace(alias, &project).second) {
        return false;
    }
    importsByName_.emplace(project.name, &project);
    imports_.push_back({std::move(alias), &project});
    return true;
}

const Project* Project::findImport(std::string_view projectName) const {
    const std::string key(projectName);
    if (const auto found = importsByAlias_.find(key); found != importsByAlias_.end()) {
        return found->second;
    }
    if (const auto found = importsByName_.find(key); found != importsByName_.end()) {
        return found->second;
    }
    return key == name ? this : nullptr;
}

std::vector<std::string> Project::importNames() const {
    std::vector<std::string> names;
    for (const ImportedProject& import : imports_) {
        names.push_back(import.alias);
        if (import.project->name != import.alias) {
            names.push_back(import.project->name);
        }
    }
    names.push_back(name);
    return names;
}

}  // namespace Vesk
