#include "tools/msvc/msvc_packages.h"

#include <cstddef>
#include <utility>

namespace Vesk {

namespace {

/// The argument of an option that stands in the same word or in the next one; empty for other
/// words.
std::string_view argumentOf(std::string_view option, const std::vector<std::string>& words,
                            std::size_t& at) {
    const std::string_view word = words[at];
    if (!word.starts_with(option)) {
        return {};
    }
    if (word.size() > option.size()) {
        return word.substr(option.size());
    }
    return at + 1 < words.size() ? std::string_view(words[++at]) : std::string_view();
}

}  // namespace

std::string libraryFileOf(std::string_view name) {
    return name == "m" || name == "c" ? std::string() : std::string(name) + ".lib";
}

std::vector<std::string> msvcCompileWords(const std::vector<std::string>& words) {
    std::vector<std::string> options;
    for (std::size_t at = 0; at < words.size(); ++at) {
        const std::string& word = words[at];
        if (word.starts_with('/')) {
            options.push_back(word);
            continue;
        }
        for (const auto& [theirs, ours] : {std::pair("-isystem", "/I"), std::pair("-I", "/I"),
                                           std::pair("-D", "/D"), std::pair("-U", "/U")}) {
            if (word.starts_with(theirs)) {
                options.push_back(std::string(ours).append(argumentOf(theirs, words, at)));
                break;
            }
        }
    }
    return options;
}

PackageLibraries msvcLibraries(const std::vector<std::string>& words) {
    PackageLibraries libraries;
    for (std::size_t at = 0; at < words.size(); ++at) {
        const std::string& word = words[at];
        if (word.starts_with("-L")) {
            libraries.directories.emplace_back(argumentOf("-L", words, at));
        } else if (word.starts_with("-l:")) {
            libraries.names.push_back(word.substr(3));
        } else if (word.starts_with("-l")) {
            if (std::string file = libraryFileOf(argumentOf("-l", words, at)); !file.empty()) {
                libraries.names.push_back(std::move(file));
            }
        } else if (!word.starts_with('-')) {
            libraries.names.push_back(word);
        }
    }
    return libraries;
}

}  // namespace Vesk
