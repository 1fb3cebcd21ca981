#include "tools/support/source_files.h"

#include <algorithm>
#include <fmt/format.h>
#include <unordered_map>

#include "base/exception.h"
#include "tools/support/file_patterns.h"
#include "tools/support/value_lists.h"

namespace Vesk {

namespace {

constexpr const char* kExcludeFiles = "EXCLUDE_FILES";

/// Removes what the target excludes. The names are not searched for in the file system.
void exclude(std::vector<std::string>& files, const std::vector<std::string>& excluded) {
    if (excluded.empty()) {
        return;
    }
    std::erase_if(files, [&excluded](const std::string& file) {
        return std::ranges::any_of(excluded, [&file](const std::string& name) {
            return isPattern(name) ? pathMatches(file, name) : file == name;
        });
    });
}

}  // namespace

const char* filesVariable(Language language) noexcept {
    constexpr const char* kNames[] = {"C_FILES", "CPP_FILES", "ASM_FILES"};
    return kNames[static_cast<int>(language)];
}

const char* flagsVariable(Language language) noexcept {
    constexpr const char* kNames[] = {"C_FLAGS", "CPP_FLAGS", "ASM_FLAGS"};
    return kNames[static_cast<int>(language)];
}

std::string_view SourceFile::extension() const noexcept {
    const std::size_t dot = path.find_last_of("./");
    return dot == std::string::npos || path[dot] == '/' ? std::string_view()
                                                        : std::string_view(path).substr(dot);
}

std::vector<SourceFile> sourceFiles(const TargetContext& target, const TargetPaths& paths,
                                    std::string_view objectSuffix) {
    const std::vector<std::string> excluded = paths.absolute(entriesOf(target, kExcludeFiles));
    std::vector<SourceFile> sources;
    std::unordered_map<std::string, Language> seen;
    for (const Language language : kLanguages) {
        std::vector<std::string> files = paths.files(filesVariable(language));
        exclude(files, excluded);
        for (std::string& file : files) {
            const auto [entry, isNew] = seen.try_emplace(file, language);
            if (!isNew && entry->second != language) {
                throw VeskException(fmt::format("'{}' is named in {} and in {}. Leave one out.",
                                                paths.inCommand(file), filesVariable(entry->second),
                                                filesVariable(language)));
            }
            if (isNew) {
                const std::string stem = paths.objectStem(file);
                sources.push_back(
                    {std::move(file), stem + std::string(objectSuffix), stem + ".d", language});
            }
        }
    }
    return sources;
}

bool hasSources(const Context& target) {
    return std::ranges::any_of(kLanguages, [&target](Language language) {
        return hasEntries(target, filesVariable(language));
    });
}

}  // namespace Vesk
