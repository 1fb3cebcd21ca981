#include <fmt/format.h>
#include <optional>
#include <string>
#include <string_view>

#include "app/modes/modes.h"
#include "app/session.h"
#include "base/ci_string.h"
#include "base/console.h"
#include "base/report.h"
#include "cache/cleaning.h"

namespace Vesk::modes {
namespace {

/// What the key of a record tells: "unit::target", arguments in parentheses, a blank and the
/// profile.
struct RecordKey {
    std::string target;
    std::string profile;
};

RecordKey readKey(const std::string& key) {
    const std::size_t nameEnd = std::min(key.find_first_of("( "), key.size());
    const std::size_t argumentsEnd = key.rfind(')');
    const std::size_t profile =
        argumentsEnd == std::string::npos ? nameEnd : std::max(nameEnd, argumentsEnd + 1);
    return {key.substr(0, nameEnd), profile < key.size() ? key.substr(profile + 1) : ""};
}

bool isOfProject(const RecordKey& key, const Project& project) {
    const std::size_t colons = key.target.rfind("::");
    if (colons == std::string::npos ||
        (!key.profile.empty() && project.findProfile(key.profile) == nullptr)) {
        return false;
    }
    const auto unit = project.findUnit(key.target.substr(0, colons));
    return unit && unit->findTarget(key.target.substr(colons + 2)) != nullptr;
}

/// What the words of the command line choose.
class Choice {
  public:
    Choice(const Settings& settings, const Session& session)
        : onlyStale_(settings.clean.onlyStale), project_(&session.catalog.active()) {
        if (session.request.words.target) {
            const TargetLocation location = session.catalog.locate(*session.request.words.target);
            project_ = location.project;
            target_ = location.unit->name + "::" + location.target->name;
        }
        if (!session.request.words.profile.empty()) {
            profile_ = session.request.words.profile;
        }
    }

    const Project& project() const noexcept { return *project_; }

    bool operator()(const MadeFiles::Entry& entry) const {
        const RecordKey key = readKey(entry.key);
        const bool chosen = (!target_ || key.target == *target_) &&
                            (!profile_ || equalsIgnoringCase(key.profile, *profile_));
        const bool former =
            entry.kind == MadeFiles::Kind::Former || entry.kind == MadeFiles::Kind::FormerByProduct;
        return chosen && (!onlyStale_ || former || !isOfProject(key, *project_));
    }

  private:
    bool onlyStale_;
    const Project* project_;
    std::optional<std::string> target_;   ///< "unit::target"; nothing: all
    std::optional<std::string> profile_;  ///< nothing: all, and none
};

std::string countOf(std::size_t count, std::string_view one, std::string_view several) {
    return fmt::format("{} {}", count, count == 1 ? one : several);
}

void report(const CleanReport& report, const Settings& settings) {
    const int level = settings.dryRun ? console::level::kNormal : console::level::kDetail;
    const char* const verb = settings.dryRun ? "Would remove" : "Removed";
    for (const std::string& file : report.files) {
        console::message(level, console::colour::kNormal, "{} {}", verb, file);
    }
    for (const std::string& directory : report.directories) {
        console::message(level, console::colour::kNormal, "{} {}/", verb, directory);
    }
    for (const CleanReport::Left& left : report.left) {
        reportWarning(fmt::format("Left '{}': {}.", left.path, left.why),
                      {"--force removes it all the same"});
    }
    const std::string files = countOf(report.files.size(), "file", "files");
    if (settings.dryRun) {
        console::normal("Would remove {}, and directories that are empty then.", files);
    } else {
        console::normal("Removed {} and {}.", files,
                        countOf(report.directories.size(), "directory", "directories"));
    }
}

}  // namespace

int clean(const Settings& settings) {
    Session session = openSession(settings);
    const Choice choice(settings, session);
    ProjectCache& cache = session.caches.of(choice.project());
    report(Vesk::clean(cache, {choice, settings.clean.force, settings.dryRun}), settings);
    session.caches.save();
    return 0;
}

}  // namespace Vesk::modes
