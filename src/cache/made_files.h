// What builds have made, and was not there before: all that may be removed again.
//
// A file of lines next to the cache, each a kind, the key of a record and a path, between tabs. It
// is read when something is built and when something is removed.
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
        Output = 'o',     ///< the record of that key tells its state
        Former = 'f',     ///< the same, but no record has it any more: the line tells its state
        ByProduct = 'b',  ///< of a command, and of no use to anybody else
        FormerByProduct = 'p',
        Directory = 'd',
    };

    struct Entry {
        Kind kind = Kind::Output;
        std::string key;  ///< of the record whose target made it first; empty for a directory
        FileState state;  ///< of a former output
    };

    /// The list of this directory's cache; its file is read when it is needed first.
    explicit MadeFiles(const std::filesystem::path& directory);

    /// What is not there now is about to be made. The path as TrackingRoot stores it.
    void add(std::string_view path, Kind kind, std::string_view key);

    /// The target does not make the file any more, which was like this when it last did. Without
    /// effect for a file that it did not make first.
    void noteFormer(std::string_view path, std::string_view key, const FileState& state);

    /// Of the by-products of this key only these are made any more. Looks at all entries.
    void keepByProducts(std::string_view key, const std::unordered_set<std::string_view>& paths);

    bool knows(std::string_view path);

    void remove(std::string_view path);

    /// By path.
    const std::map<std::string, Entry, std::less<>>& entries();

    /// Writes the file if there is news. A failure costs no more than that something is not
    /// removed one day.
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
