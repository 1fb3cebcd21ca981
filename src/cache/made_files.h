// The files and directories that builds created: everything that may be removed again.
//
// They are kept in a file next to the cache. Each line has a kind, the key of a record and a path,
// separated by tabs. The file is read when something is built or removed.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <unordered_set>

#include "cache/file_state.h"

namespace Vesk {

inline constexpr const char* kMadeFileName = ".vesk_cache.made";

class MadeFiles {
  public:
    enum class Kind : char {
        Output = 'o',     ///< the record of that key holds its state
        Former = 'f',     ///< the same, but no record has it any more; the line holds its state
        ByProduct = 'b',  ///< of a command, and of no use to anything else
        FormerByProduct = 'p',
        Directory = 'd',
    };

    struct Entry {
        Kind kind = Kind::Output;
        std::string key;  ///< of the record whose target made it first; empty for a directory
        FileState state;  ///< of a former output
    };

    /// The list of this directory's cache. Its file is read when it is first needed.
    explicit MadeFiles(const std::filesystem::path& directory);

    /// Something that does not exist yet is about to be made. The path is in the form that
    /// TrackingRoot stores.
    void add(std::string_view path, Kind kind, std::string_view key);

    /// The target no longer makes the file; `state` is how it last made it. Has no effect for a
    /// file that this target did not make first.
    void noteFormer(std::string_view path, std::string_view key, const FileState& state);

    /// Only these by-products of the key are still made. Looks at all entries.
    void keepByProducts(std::string_view key, const std::unordered_set<std::string_view>& paths);

    bool knows(std::string_view path);

    void remove(std::string_view path);

    /// By path.
    const std::map<std::string, Entry, std::less<>>& entries();

    /// Writes the file if anything is new. If that fails, something may not be removed later; that
    /// is all.
    void save();

  private:
    void load();
    void readLine(std::string_view line);

    std::filesystem::path file_;
    std::map<std::string, Entry, std::less<>> entries_;
    bool loaded_ = false;
    bool changed_ = false;
};

}  // namespace Vesk
