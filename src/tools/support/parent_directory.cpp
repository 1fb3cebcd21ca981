#include "tools/support/parent_directory.h"

#include "platform/files.h"

namespace Vesk {

std::filesystem::path parentDirectory(const std::filesystem::path& path) {
    std::string text = platform::pathToUtf8(path);
    text.erase(text.find_last_not_of("/\\") + 1);
    return platform::pathFromUtf8(text).parent_path();
}

}  // namespace Vesk
