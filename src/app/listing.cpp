#include "app/listing.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>

#include "base/console.h"
#include "base/text.h"
#include "platform/files.h"
#include "types/errors.h"

namespace Vesk {
namespace {

namespace fs = std::filesystem;

/// "src/vesk.txt:12", as seen from the current directory; empty for a target of no file.
std::string placeOf(const Target& target, const fs::path& directory) {
    if (!target.file) {
        return {};
    }
    const fs::path relative = target.file->lexically_proximate(directory);
    return platform::pathToUtf8(relative) + ":" + std::to_string(target.line);
}

}  // namespace

void listProfiles(const Project& project) {
    for (const std::string& name : project.profileNames()) {
        console::normal("{}", name);
    }
}

void listUnits(const Project& project) {
    for (const std::string& name : project.unitNames()) {
        console::normal("{}", name);
    }
}

void listTargets(const Project& project, const std::string& unitName) {
    const auto unit = project.findUnit(unitName);
    if (!unit) {
        throw NotFoundException("Unit", unitName, didYouMean(unitName, project.unitNames()));
    }
    std::size_t width = 0;
    for (const auto& target : unit->targets) {
        width = std::max(width, target->name.size());
    }
    const fs::path directory = fs::weakly_canonical(fs::current_path());
    for (const auto& target : unit->targets) {
        const std::string place = placeOf(*target, directory);
        if (place.empty()) {
            console::normal("{}", target->name);
        } else {
            console::normal("{:{}}  {}", target->name, width,
                            console::coloured(console::colour::kSecondColumn, place));
        }
    }
}

}  // namespace Vesk
