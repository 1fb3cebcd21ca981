#include "cache/shadowing.h"

#include <algorithm>

#include "cache/tracked_path.h"

namespace Vesk {
namespace {

/// The directories of the source and of the headers, each once: compilers look beside a file first.
std::vector<std::string_view> directoriesOf(const HeadersRead& read) {
    std::vector<std::string_view> directories = {directoryOf(read.source)};
    for (const std::string& header : read.headers) {
        const std::string_view directory = directoryOf(header);
        if (std::ranges::find(directories, directory) == directories.end()) {
            directories.push_back(directory);
        }
    }
    return directories;
}

}  // namespace

void eachEarlierPlace(const HeadersRead& read,
                      const std::function<bool(const std::string&)>& take) {
    const std::vector<std::string_view> beside = directoriesOf(read);
    const std::vector<std::string>& searched = read.search->directories;
    std::string place;
    for (const std::string& header : read.headers) {
        const auto tell = [&](std::string_view directory, std::string_view name) {
            place.assign(directory).append(1, '/').append(name);
            return place == header || take(place);
        };
        for (auto found = searched.begin(); found != searched.end(); ++found) {
            if (!isBelow(header, *found)) {
                continue;
            }
            const std::string_view name = std::string_view(header).substr(found->size() + 1);
            const auto tellAll = [&](auto first, auto last) {
                return std::all_of(first, last, [&](std::string_view d) { return tell(d, name); });
            };
            if (!tellAll(beside.begin(), beside.end()) || !tellAll(searched.begin(), found)) {
                return;
            }
        }
    }
}

std::string watchedNames(const std::string& place, FileStates& states) {
    std::string_view directory = directoryOf(place);
    std::string names = namesPath(directory);
    while (!directory.empty() && states.kindOf(names) != FileState::Kind::Names) {
        directory = directoryOf(directory);
        names = namesPath(directory);
    }
    return names;
}

}  // namespace Vesk
