#include "app/user_registry.h"

#include <filesystem>

#include "base/exception.h"
#include "platform/system.h"
#include "project/user_data.h"

namespace Vesk {
namespace {

std::filesystem::path directoryOfRegistry() {
    try {
        return userDataDirectory();
    } catch (const std::filesystem::filesystem_error&) {
        rethrowWithNote(std::string("it is to hold your registry; set ") +
                        (platform::kWindows ? "APPDATA" : "XDG_CONFIG_HOME or APPDATA") +
                        " to a directory that you may write to");
    }
}

}  // namespace

const Registry& UserRegistry::read() {
    if (!registry_) {
        registry_ = loadRegistry(directoryOfRegistry() / kRegistryFileName);
    }
    return *registry_;
}

}  // namespace Vesk
