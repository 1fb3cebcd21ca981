#include "driver/mentioned_files.h"

#include <algorithm>

namespace Vesk {
namespace {

bool mentions(const Recipe& recipe, std::string_view text) {
    const auto has = [text](const std::string& place) {
        return place.find(text) != std::string::npos;
    };
    return has(recipe.command) ||
           std::ranges::any_of(recipe.supportFiles, has, &SupportFile::content);
}

}  // namespace

std::vector<std::string> filesMentioned(const Recipe& recipe, const std::vector<std::string>& files,
                                        const TrackingRoot& root) {
    std::vector<std::string> mentioned;
    std::ranges::copy_if(files, std::back_inserter(mentioned), [&](const std::string& file) {
        return mentions(recipe, root.stored(file));
    });
    return mentioned;
}

}  // namespace Vesk
