// The files of a build, each examined once however many targets name it.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "base/text_lookup.h"
#include "cache/file_state.h"
#include "platform/files.h"

namespace Vesk {

/// Remembers the state of each file when the build first looked at it: before the commands that use
/// it run, or after the command that made it. Paths are absolute, UTF-8, with forward slashes; one
/// spelling is one file. A namesPath stands for the names in a directory. All operations may be
/// called from any thread.
class FileStates {
  private:
    struct Entry {
        FileState::Kind kind = FileState::Kind::Missing;
        platform::FileStatus status;
        ContentHash hash;
        std::int64_t examinedAt = 0;  ///< of platform::fileClock
        bool examined = false;
        bool hashed = false;
        bool changedWhileRead = false;  ///< changed between being examined and being read
        bool builtHere = false;         ///< by this build, so a new time means nothing
    };

    using Node = std::pair<const std::string, Entry>;

  public:
    enum class Comparison {
        Same,         ///< nothing was read
        SameContent,  ///< touched: remember the times that `current` gives
        Changed,
        Missing,
    };

    /// A file, for those who ask about it more than once. As good as its path while this lives.
    class File {
      public:
        const std::string& path() const noexcept { return node_->first; }

      private:
        friend FileStates;
        explicit File(Node& node) : node_(&node) {}

        Node* node_;
    };

    File file(std::string_view path);

    /// Compares the file as the build found it with a stored state.
    Comparison compare(std::string_view path, const FileState& stored);
    Comparison compare(File file, const FileState& stored);

    /// The file is in this state now, which is of kind File, unless it has been examined before.
    void assume(std::string_view path, const FileState& state);

    /// The file as the build found it, with the hash of its content.
    FileState current(std::string_view path);
    FileState current(File file);

    /// Whether `current` would give just that state, as it often does for a file that is the same.
    bool isCurrent(File file, const FileState& stored);

    /// What kind of thing is there, if any. Reads nothing.
    FileState::Kind kindOf(std::string_view path);

    /// Examines files that commands are about to read.
    void look(const std::vector<std::string>& paths);

    /// The state to remember for a file that commands have just read: the one from before they
    /// began, at `startedAt` (of platform::fileClock). Unknown if the file has changed since.
    FileState afterReading(std::string_view path, std::int64_t startedAt);

    /// A command has written the file: the next request examines it again.
    void written(std::string_view path);

    /// The same for everything that is or was below a directory.
    void writtenBelow(std::string_view directory);

    /// Whether the times in a state of kind Recent can be trusted by now: enough has passed and the
    /// file is still the same. Then its kind may be File.
    static bool isSettled(std::string_view path, const FileState& state);

    /// Reads what `current` would have to read for these files, on this many threads.
    void readAhead(const std::vector<std::string>& paths, unsigned workers);

  private:
    Node& known(std::string_view path);
    Entry& examined(std::string_view path);
    static Entry& examined(Node& node);
    static Comparison compare(Node& node, const FileState& stored);
    static void examine(Entry& entry, const std::string& path);
    static void read(Entry& entry, std::string_view path);
    static void readNames(Entry& entry, std::string_view path);
    static Comparison compareNames(Entry& entry, std::string_view path, const FileState& stored);
    static bool changedMeanwhile(const Entry& entry, std::string_view path, std::int64_t startedAt);
    static FileState stateOf(Entry& entry, std::string_view path);

    std::mutex mutex_;
    TextMap<Entry> entries_;
};

}  // namespace Vesk
