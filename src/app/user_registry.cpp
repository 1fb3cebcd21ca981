#include "app/user_registry.h"

#include "project/user_data.h"

namespace Vesk {

const Registry& UserRegistry::read() {
    if (!registry_) {
        registry_ = loadRegistry(userDataDirectory() / kRegistryFileName);
    }
    return *registry_;
}

}  // namespace Vesk
