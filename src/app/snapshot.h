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
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Vesk {

class VisitStore;
class VisitTree;

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
    bool repeats() const;

    /// Begins to watch a run.
    void begin();

    /// Its first visit is about to begin.
    void visitsBegin();

    /// Ends the watch. Keeps the run, and returns true, if it only asked and the directory is one
    /// that has a cache. `ownFiles`: of the caches. A failure to keep it is none of the build's:
    /// this only saves time.
    bool keep(const std::vector<std::filesystem::path>& ownFiles);

    /// For a run that did more than ask, when all is saved: keeps what the next one will do.
    void keepForeseen(VisitTree& tree, const VisitStore& store,
                      const std::vector<std::filesystem::path>& ownFiles);

  private:
    /// What a run wrote and asked.
    struct Watched {
        std::string transcript;
        std::string recording;
    };

    std::filesystem::path fileToWrite() const;
    void write(const Watched& run) const;

    std::filesystem::path cache_;
    std::vector<std::filesystem::path> files_;
    std::string start_;  ///< of its file: the version, and a hash of what makes it this run
    std::filesystem::path file_;  ///< where it is kept
    bool watches_ = false;
    std::optional<Watched> beginning_;  ///< of the run, up to its first visit
};

}  // namespace Vesk
