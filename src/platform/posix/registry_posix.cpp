#include "platform/registry.h"

namespace Vesk::platform {

std::optional<std::string> registryText(const std::string&, const std::string&, RegistryView) {
    return std::nullopt;
}

}  // namespace Vesk::platform
