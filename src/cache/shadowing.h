// Where a compiler has looked for headers in vain: a file that appears there takes the place of the
// one that was found.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "cache/file_states.h"
#include "run/recipe.h"

namespace Vesk {

/// What one command has read. Paths as FileStates takes them.
struct HeadersRead {
    const HeaderSearch* search = nullptr;
    std::string_view source;
    std::vector<std::string> headers;
};

/// Calls `take` with every path that comes before one of the headers, until it says no. Which file
/// included a header, and by which name, is not known: a path may be among them at which nobody has
/// looked.
void eachEarlierPlace(const HeadersRead& read, const std::function<bool(const std::string&)>& take);

/// The namesPath that shows a file that appears at `place`: that of its directory, or of the
/// nearest one above that is there.
std::string watchedNames(const std::string& place, FileStates& states);

}  // namespace Vesk
