#include "app/project_caches.h"

#include <algorithm>
#include <string>
#include <system_error>

#include "base/console.h"
#include "base/exception.h"
#include "cache/cache_file.h"
#include "events/events.h"
#include "platform/directories.h"
#include "platform/environment.h"
#include "platform/interrupt.h"
#include "platform/recorder.h"

namespace Vesk {
namespace {

namespace fs = std::filesystem;

/// Tells the vesk that a command starts in which directories its ancestors build: it would wait
/// for them, and they for it. One directory a line.
constexpr const char* kBuildingVariable = "VESK_BUILDING";

void refuseIfBuilding(const std::string& building, const fs::path& directory) {
    if (building.find("\n" + platform::pathToUtf8(directory) + "\n") != std::string::npos) {
        throw VeskException("A command of a build in " + platform::pathToUtf8(directory) +
                            " started another build in the same place, which would wait for it "
                            "forever. Make the target a dependency instead.");
    }
}

/// Null, with a warning, when the lock is not available. Sets `waits` when somebody else has it.
std::unique_ptr<platform::FileLock> lock(const fs::path& directory, bool& waits) {
    fs::path file = directory / kCacheFileName;
    file += ".lock";
    try {
        return std::make_unique<platform::FileLock>(file, [&directory, &waits] {
            waits = true;
            console::normal("Waiting for another vesk that builds in {}",
                            platform::pathToUtf8(directory));
            console::flush();
        });
    } catch (const std::system_error& error) {
        if (platform::interruptSignal() != 0) {
            throw;
        }
        console::warning("Building in {} without a lock: {}", platform::pathToUtf8(directory),
                         error.what());
        console::warning("  let no other vesk build there at the same time");
        return nullptr;
    }
}

}  // namespace

ProjectCaches::ProjectCaches(const std::vector<const Project*>& projects, Use use)
    : states_(std::make_unique<FileStates>()), use_(use) {
    const events::Span span(events::Activity::Cache, "load");
    for (const Project* project : projects) {
        caches_.try_emplace(project->root);
    }
    std::string building = platform::environmentVariable(kBuildingVariable).value_or("\n");
    std::string here = building;
    // In the order of the paths, in every process: no two wait for each other.
    for (auto& [directory, entry] : caches_) {
        if (use == Use::build) {
            refuseIfBuilding(building, directory);
            entry.lock = lock(directory, hasWaited_);
            here += platform::pathToUtf8(directory) + "\n";
        }
        entry.cache = std::make_unique<ProjectCache>(directory, *states_);
        const platform::RecordingPause pause;  // see ownFiles
        entry.cache->load();
    }
    if (use == Use::build) {
        platform::setEnvironmentVariable(kBuildingVariable, here);
    }
}

/// Each is the project's that it is in, innermost first.
void ProjectCaches::noteMadeDirectories() {
    for (const fs::path& made : platform::takeMadeDirectories()) {
        const std::string path = trackedPath(made);
        for (auto entry = caches_.rbegin(); entry != caches_.rend(); ++entry) {
            ProjectCache& cache = *entry->second.cache;
            const std::string_view stored = cache.root().stored(path);
            if (stored != path && !stored.empty()) {
                cache.made().add(stored, MadeFiles::Kind::Directory, {});
                break;
            }
        }
    }
}

bool ProjectCaches::areLocked() const {
    return std::ranges::all_of(caches_,
                               [](const auto& each) { return each.second.lock != nullptr; });
}

std::vector<fs::path> ProjectCaches::ownFiles() const {
    std::vector<fs::path> files;
    for (const auto& [directory, entry] : caches_) {
        std::ranges::move(entry.cache->ownFiles(), std::back_inserter(files));
    }
    return files;
}

void ProjectCaches::save() {
    const events::Span span(events::Activity::Cache, "save");
    if (use_ == Use::build) {
        noteMadeDirectories();
        for (auto& [directory, entry] : caches_) {
            entry.cache->save();
        }
    }
}

}  // namespace Vesk
