#include "tools/support/file_patterns.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <optional>
#include <span>
#include <system_error>

#include "base/ci_string.h"
#include "base/exception.h"
#include "platform/directories.h"
#include "platform/files.h"
#include "platform/system.h"

namespace Vesk {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kAnyDirectories = "**";

using Parts = std::span<const std::string_view>;

std::vector<std::string_view> partsOf(std::string_view path) {
    std::vector<std::string_view> parts;
    std::size_t start = 0;
    for (std::size_t slash = path.find('/'); slash != std::string_view::npos;
         slash = path.find('/', start)) {
        parts.push_back(path.substr(start, slash - start));
        start = slash + 1;
    }
    parts.push_back(path.substr(start));
    return parts;
}

bool sameCharacter(char a, char b) noexcept {
    return platform::kWindows ? asciiLower(a) == asciiLower(b) : a == b;
}

bool continuesCharacter(char c) noexcept {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

/// Matches one part of a path against one part of a pattern. After a mismatch the last `*` takes
/// one more byte. That is enough: an earlier `*` never has to.
bool nameMatches(std::string_view name, std::string_view pattern) noexcept {
    if (name.substr(0, 1) == "." && pattern.substr(0, 1) != ".") {
        return false;
    }
    std::size_t at = 0;
    std::size_t in = 0;
    std::size_t star = std::string_view::npos;
    std::size_t starAt = 0;
    while (at < name.size()) {
        if (in < pattern.size() && pattern[in] == '*') {
            star = in++;
            starAt = at;
        } else if (in < pattern.size() && pattern[in] == '?') {
            ++in;
            for (++at; at < name.size() && continuesCharacter(name[at]);) {
                ++at;
            }
        } else if (in < pattern.size() && sameCharacter(pattern[in], name[at])) {
            ++in;
            ++at;
        } else if (star != std::string_view::npos) {
            in = star + 1;
            at = ++starAt;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', in) == std::string_view::npos;
}

bool partsMatch(Parts path, Parts pattern) noexcept {
    if (pattern.empty()) {
        return path.empty();
    }
    if (pattern.front() == kAnyDirectories) {
        for (std::size_t taken = 0; taken < path.size(); ++taken) {
            if (partsMatch(path.subspan(taken), pattern.subspan(1))) {
                return true;
            }
        }
        return pattern.size() == 1;
    }
    return !path.empty() && nameMatches(path.front(), pattern.front()) &&
           partsMatch(path.subspan(1), pattern.subspan(1));
}

using Entry = platform::DirectoryEntry;

/// The entries of a directory; none if it does not exist.
std::vector<Entry> entriesIn(const std::string& directory) {
    std::error_code error;
    std::vector<Entry> entries =
        platform::listDirectory(platform::pathFromUtf8(directory + "/"), error);
    if (error && error != std::errc::no_such_file_or_directory &&
        error != std::errc::not_a_directory) {
        throw VeskException(fmt::format("Directory '{}' cannot be searched for files: {}.",
                                        directory, error.message()));
    }
    return entries;
}

class Search {
  public:
    explicit Search(const std::string& skipped) : skipped_(skipped) {}

    /// Looks in one directory for what the parts of patterns describe. The directory is read only
    /// once.
    void in(const std::string& directory, Parts parts) {
        const std::string_view part = parts.front();
        if (part != kAnyDirectories && !isPattern(part)) {
            inNamed(directory + "/" + std::string(part), parts.subspan(1));
            return;
        }
        inRead(directory, entriesIn(directory), parts);
    }

    std::vector<std::string> found;

  private:
    void inNamed(const std::string& path, Parts rest) {
        if (!rest.empty()) {
            in(path, rest);
        } else if (const auto status = platform::fileStatus(platform::pathFromUtf8(path));
                   status && !status->directory) {
            found.push_back(path);
        }
    }

    void inRead(const std::string& directory, const std::vector<Entry>& entries, Parts parts) {
        const std::string_view part = parts.front();
        const bool last = parts.size() == 1;
        if (part != kAnyDirectories) {
            for (const Entry& entry : entries) {
                if (entry.directory != last && nameMatches(entry.name, part)) {
                    inNamed(directory + "/" + entry.name, parts.subspan(1), entry);
                }
            }
            return;
        }
        static constexpr std::string_view kAnyFile[] = {"*"};
        inRead(directory, entries, last ? Parts(kAnyFile) : parts.subspan(1));
        for (const Entry& entry : entries) {
            const std::string path = directory + "/" + entry.name;
            if (entry.directory && !entry.link && entry.name.front() != '.' && path != skipped_) {
                in(path, parts);
            }
        }
    }

    /// The same for an entry that has been read; the system is not asked about a file.
    void inNamed(const std::string& path, Parts rest, const Entry& entry) {
        if (entry.directory) {
            in(path, rest);
        } else {
            found.push_back(path);
        }
    }

    const std::string& skipped_;
};

}  // namespace

bool isPattern(std::string_view text) noexcept {
    return text.find_first_of("*?") != std::string_view::npos;
}

std::vector<std::string> filesMatching(const std::string& pattern, const std::string& skipped) {
    const std::size_t directoryEnd = pattern.rfind('/', pattern.find_first_of("*?"));
    const std::vector<std::string_view> parts =
        partsOf(std::string_view(pattern).substr(directoryEnd + 1));
    Search search(skipped);
    search.in(pattern.substr(0, directoryEnd), parts);
    std::ranges::sort(search.found);
    const auto repeated = std::ranges::unique(search.found);
    search.found.erase(repeated.begin(), repeated.end());
    return std::move(search.found);
}

bool pathMatches(std::string_view path, std::string_view pattern) noexcept {
    return partsMatch(partsOf(path), partsOf(pattern));
}

}  // namespace Vesk
