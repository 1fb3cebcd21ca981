#include "tools/discovery/pkg_config.h"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>
#include <optional>
#include <set>
#include <utility>

#include "base/exception.h"
#include "base/text.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/system.h"
#include "run/capture_output.h"
#include "tools/support/target_paths.h"

namespace Vesk {

namespace {

using platform::Dependence;

constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::string_view kComparison = "<>=!";

/// Everything in pkg-config's manual that changes an answer.
constexpr const char* kVariables[] = {"PKG_CONFIG_PATH",
                                      "PKG_CONFIG_LIBDIR",
                                      "PKG_CONFIG_SYSROOT_DIR",
                                      "PKG_CONFIG_SYSTEM_INCLUDE_PATH",
                                      "PKG_CONFIG_SYSTEM_LIBRARY_PATH",
                                      "PKG_CONFIG_ALLOW_SYSTEM_CFLAGS",
                                      "PKG_CONFIG_ALLOW_SYSTEM_LIBS",
                                      "PKG_CONFIG_DISABLE_UNINSTALLED",
                                      "PKG_CONFIG_TOP_BUILD_DIR",
                                      "CPATH",
                                      "C_INCLUDE_PATH",
                                      "CPLUS_INCLUDE_PATH"};

bool isOf(char c, std::string_view set) noexcept {
    return set.find(c) != std::string_view::npos;
}

/// The next name, version or comparison; commas separate as well. Empty at the end.
std::string_view nextToken(std::string_view& text) {
    text.remove_prefix(
        std::min(text.size(), text.find_first_not_of(std::string(kBlanks).append(","))));
    if (text.empty()) {
        return {};
    }
    const bool compares = isOf(text.front(), kComparison);
    const auto end = std::ranges::find_if(text, [compares](char c) {
        return isOf(c, kBlanks) || c == ',' || isOf(c, kComparison) != compares;
    });
    const std::string_view token = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    text.remove_prefix(token.size());
    return token;
}

bool isComparison(std::string_view token) noexcept {
    return !token.empty() && isOf(token.front(), kComparison);
}

/// Nothing in the word has a meaning for a shell, and it is not an option.
bool isPlain(std::string_view token) noexcept {
    return !token.empty() && token.front() != '-' && std::ranges::all_of(token, [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               isOf(c, "._+-:~");
    });
}

[[noreturn]] void refuse(const std::vector<std::string>& entries, std::string_view token) {
    VeskException error(fmt::format("PACKAGES = {}: '{}' is not a package.",
                                    fmt::format("\"{}\"", joined(entries, "\", \"")), token));
    error.addNote(R"(write names, with a version if need be: PACKAGES = ["zlib", "gtk4 >= 4.8"])");
    throw error;
}

ProgramAnswer ask(const std::string& program, const std::string& arguments,
                  Dependence dependence = Dependence::Recorded) {
    return askProgram(platform::pathFromUtf8(program), arguments, dependence);
}

std::string quoted(const std::vector<std::string>& packages) {
    return "\"" + joined(packages, "\" \"") + "\"";
}

/// The package that pkg-config rejects, and why.
[[noreturn]] void throwWhatIsMissing(const std::string& program,
                                     const std::vector<std::string>& packages) {
    for (const std::string& package : packages) {
        const ProgramAnswer answer =
            ask(program, "--exists --print-errors --errors-to-stdout " + quoted({package}));
        if (answer.status == 0) {
            continue;
        }
        VeskException error(fmt::format("The package '{}' is missing.", package));
        std::string_view said = answer.text;
        for (std::size_t end = 0; !said.empty(); said.remove_prefix(end)) {
            end = std::min(said.size(), said.find('\n') + 1);
            error.addNote("pkg-config: " + std::string(trimmed(said.substr(0, end))));
        }
        error.addNote(
            "install its development files (a package of the system that often ends in -dev or "
            "-devel), or name the directory of its .pc file in PKG_CONFIG_PATH");
        throw error;
    }
    throw VeskException(fmt::format("'{}' does not answer for the packages {}. Call it to see why.",
                                    program, joined(packages, ", ")));
}

void addDirectories(std::vector<std::string>& directories, std::string_view list) {
    while (!list.empty()) {
        const std::size_t end = std::min(list.size(), list.find(platform::kPathListSeparator));
        if (end > 0) {
            directories.push_back(normalPath(list.substr(0, end)));
        }
        list.remove_prefix(std::min(list.size(), end + 1));
    }
}

/// Goes through the .pc files of packages and of everything that they require, and asks the system
/// about each place where one of them may be.
class PackageFiles {
  public:
    explicit PackageFiles(const std::vector<std::string>& directories)
        : directories_(directories) {}

    /// Whether all were found. If so, everything that can change the answers has been looked at.
    bool lookAt(const std::vector<std::string>& packages) {
        std::vector<std::string> names = packagesOf(packages);
        while (!names.empty()) {
            const std::string name = std::move(names.back());
            names.pop_back();
            if (!seen_.insert(name).second) {
                continue;
            }
            if (!readFiles(name, names)) {
                return false;
            }
        }
        return true;
    }

  private:
    static std::vector<std::string> packagesOf(std::vector<std::string> packages) {
        for (std::string& package : packages) {
            package.resize(std::min(package.size(), package.find(' ')));
        }
        return packages;
    }

    /// Adds what the package requires. A package that is built but not installed has a file that
    /// goes before all others or, as there are several pkg-configs, before those of its directory.
    /// Both count.
    bool readFiles(const std::string& name, std::vector<std::string>& required) const {
        bool found = false;
        for (const char* suffix : {"-uninstalled.pc", ".pc"}) {
            if (const std::optional<std::string> text = firstFile(name + suffix)) {
                found = true;
                std::ranges::move(packagesRequired(*text), std::back_inserter(required));
            }
        }
        return found;
    }

    std::optional<std::string> firstFile(const std::string& name) const {
        for (const std::string& directory : directories_) {
            std::error_code ignored;
            if (const std::string file = directory + "/" + name; isFile(file)) {
                return platform::readWholeFile(platform::pathFromUtf8(file), ignored);
            }
        }
        return std::nullopt;
    }

    const std::vector<std::string>& directories_;
    std::set<std::string> seen_;
};

}  // namespace

std::vector<std::string> packagesNamed(const std::vector<std::string>& entries) {
    const std::string all = joined(entries, " ");
    std::string_view text = all;
    std::vector<std::string> packages;
    for (std::string_view token = nextToken(text); !token.empty();) {
        if (!isPlain(token)) {
            refuse(entries, token);
        }
        std::string package(token);
        token = nextToken(text);
        if (isComparison(token)) {
            const std::string_view version = nextToken(text);
            if (!isPlain(version)) {
                refuse(entries, fmt::format("{} {} {}", package, token, version));
            }
            package += fmt::format(" {} {}", token, version);
            token = nextToken(text);
        }
        if (std::ranges::find(packages, package) == packages.end()) {
            packages.push_back(std::move(package));
        }
    }
    return packages;
}

std::vector<std::string> wordsOfAnswer(std::string_view answer) {
    std::vector<std::string> words;
    std::optional<std::string> word;
    char quote = 0;
    for (std::size_t i = 0; i < answer.size(); ++i) {
        const char c = answer[i];
        if (quote == 0 && isOf(c, kBlanks)) {
            if (word) {
                words.push_back(*std::exchange(word, std::nullopt));
            }
            continue;
        }
        word = std::move(word).value_or("");
        if (c == '\\' && quote != '\'' && i + 1 < answer.size()) {
            *word += answer[++i];
        } else if (c == quote) {
            quote = 0;
        } else if (quote == 0 && (c == '"' || c == '\'')) {
            quote = c;
        } else {
            *word += c;
        }
    }
    if (word) {
        words.push_back(std::move(*word));
    }
    return words;
}

std::vector<std::string> packagesRequired(std::string_view pcFile) {
    std::vector<std::string> names;
    bool goesOn = false;
    for (std::size_t end = 0; !pcFile.empty(); pcFile.remove_prefix(end)) {
        end = std::min(pcFile.size(), pcFile.find('\n') + 1);
        end = end == 0 ? pcFile.size() : end;
        std::string_view line = trimmed(pcFile.substr(0, end));
        const bool isRequirement =
            goesOn || line.starts_with("Requires:") || line.starts_with("Requires.private:");
        goesOn = isRequirement && line.ends_with('\\');
        if (!isRequirement) {
            continue;
        }
        line.remove_prefix(line.starts_with("Requires") ? line.find(':') + 1 : 0);
        line.remove_suffix(goesOn ? 1 : 0);
        line = line.substr(0, line.find('#'));
        for (std::string_view token = nextToken(line); !token.empty(); token = nextToken(line)) {
            if (isComparison(token)) {
                nextToken(line);
            } else {
                names.emplace_back(token);
            }
        }
    }
    return names;
}

const std::vector<std::string>& PkgConfig::directoriesOf(const std::string& program) {
    return directories_.get(program, [&] {
        std::vector<std::string> directories;
        for (const char* variable : {"PKG_CONFIG_PATH", "PKG_CONFIG_LIBDIR"}) {
            addDirectories(directories, platform::environmentVariable(variable).value_or(""));
        }
        addDirectories(directories, trimmed(ask(program, "--variable=pc_path pkg-config").text));
        return directories;
    });
}

const PackageFlags& PkgConfig::flags(const std::string& program,
                                     const std::vector<std::string>& packages, LinkKind kind) {
    const std::string asked = quoted(packages);
    const char* libraries = kind == LinkKind::Static ? "--static --libs " : "--libs ";
    const std::string key = fmt::format("{}\n{}{}", program, libraries, asked);
    return answers_.get(key, [&] {
        for (const char* variable : kVariables) {
            platform::environmentVariable(variable);
        }
        const bool allSeen = PackageFiles(directoriesOf(program)).lookAt(packages);
        const Dependence dependence = allSeen ? Dependence::Recorded : Dependence::Unknown;
        const ProgramAnswer compile = ask(program, "--cflags " + asked, dependence);
        const ProgramAnswer link = ask(program, libraries + asked, dependence);
        if (compile.status != 0 || link.status != 0) {
            throwWhatIsMissing(program, packages);
        }
        return PackageFlags{wordsOfAnswer(compile.text), wordsOfAnswer(link.text)};
    });
}

}  // namespace Vesk
