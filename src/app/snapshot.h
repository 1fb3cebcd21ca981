// Runs that find nothing to do, kept so that nobody need find it out again: of each command line
// the last one, of the last few command lines.
//
// Such a run depends on the answers to its questions alone (see platform/recorder.h): the files
// that it read or looked at, what directories hold, variables of the environment, the month. They
// are kept together with what it wrote to the console. While they are the same, the same command
// line has the same outcome, and no unit file is read for it.
//
// A run that built something is followed by one that finds nothing to do. What that one will ask
// and write is known beforehand: what this run asked and wrote until its first visit, and then what
// the visits that it has kept say (see driver/visit_tree.h).
//
// Where that is known, it is also known which visit asks what. When only visits find other answers,
// the run passes over all the rest (see driver/standing_visits.h).
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "driver/standing_visits.h"
#include "driver/visit_tree.h"
#include "platform/question_list.h"

namespace Vesk {

class VisitStore;

/// Next to the cache of the project. Further ones have numbers: ".vesk_cache.snapshot.2".
inline constexpr const char* kSnapshotFileName = ".vesk_cache.snapshot";

/// How many command lines are kept; a further one takes the place of the oldest.
inline constexpr std::size_t kSnapshotCount = 8;

class Snapshot {
  public:
    /// The snapshot of runs in this directory with these arguments.
    Snapshot(const std::filesystem::path& directory, const std::vector<std::string>& arguments);
    ~Snapshot();
    Snapshot(const Snapshot&) = delete;
    Snapshot& operator=(const Snapshot&) = delete;

    /// True when this run was kept and would go the same way again; then what it wrote has been
    /// written.
    bool repeats();

    /// When it would go another way: the visits that stand nevertheless. Null if that is not known.
    StandingVisits* standing() noexcept { return standing_ ? &*standing_ : nullptr; }

    /// To be called when this run has the caches for itself. `hasWaited`: another one has built
    /// meanwhile. What has been compared is out of date then, and so it is if the caches' own files
    /// tell of another run.
    void haveCaches(bool hasWaited);

    /// Nobody passes over them.
    void dropStanding() noexcept { standing_.reset(); }

    /// Begins to watch a run. One that passes over visits goes as it went before its first visit.
    void begin();

    /// Whether the run that is watched has written something so far.
    bool saidNothing() const;

    /// Its first visit is about to begin.
    void visitsBegin();

    /// Ends the watch. `ownFiles`: of the caches.
    void end(const std::vector<std::filesystem::path>& ownFiles);

    /// When all is saved: keeps what the next run will do. False if that is not known. A failure to
    /// write it is none of the build's: this only saves time.
    bool keepForeseen(VisitTree& tree, VisitStore& store,
                      const std::vector<std::filesystem::path>& ownFiles,
                      const std::optional<ContentHash>& surroundings);

    /// Keeps the run itself, if it only asked.
    void keep() const;

    /// Of a run that passed over what stands, and then failed: keeps that for the next one.
    void keepStanding(const std::vector<std::filesystem::path>& ownFiles);

  private:
    /// What a run wrote and asked, and its visits, as bytes; empty: it is not known what they are.
    struct Run {
        std::string transcript;
        std::string recording;
        std::string tree;
    };

    /// The parts of a file.
    struct Content {
        std::string_view transcript;
        std::string_view recording;
        std::string_view tree;
    };

    static std::optional<Content> contentOf(std::string_view bytes);
    bool repeats(const Content& content);
    void stopWatching();
    std::filesystem::path fileToWrite() const;
    void write(const Run& run) const;

    std::filesystem::path cache_;
    std::vector<std::filesystem::path> files_;
    std::string start_;  ///< of its file: the version, and a hash of what makes it this run
    std::filesystem::path file_;  ///< where it is to be kept
    std::string bytes_;           ///< of the file where it was kept
    std::optional<StandingVisits> standing_;
    bool watches_ = false;
    std::optional<Run> beginning_;  ///< of the run, up to its first visit
    std::optional<Run> whole_;      ///< all of it, if it only asked
};

}  // namespace Vesk
