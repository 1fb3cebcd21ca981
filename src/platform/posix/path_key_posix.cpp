#include "platform/path_key.h"

namespace Vesk::platform {

std::string pathKey(const std::filesystem::path& path) {
    return path.native();
}

}  // namespace Vesk::platform
