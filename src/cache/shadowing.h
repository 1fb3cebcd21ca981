// Places where a compiler looked for headers in vain. A file that appears there would be found
// instead of the current one.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "cache/file_states.h"
#include "run/recipe.h"

namespace Vesk {

/// What one command has read. Paths are those that FileStates takes.
struct HeadersRead {
    const HeaderSearch* search = nullptr;
    std::string_view source;
    std::vector<std::string> headers;
};

/// Calls `take` with every path that is searched before one of the headers is found, until it
/// returns false. Which file included a header, and by which name, is not known, so some of these
/// paths may never have been looked at.
void eachEarlierPlace(const HeadersRead& read, const std::function<bool(const std::string&)>& take);

/// The namesPath that reveals a file appearing at `place`: that of its directory, or of the nearest
/// existing directory above.
std::string watchedNames(const std::string& place, FileStates& states);

}  // namespace Vesk
