#include "app/modes/modes.h"
#include "base/console.h"

namespace Vesk::modes {

int printVersion(const Settings& /*settings*/) {
    console::normal("{}", VESK_VERSION);
    return 0;
}

}  // namespace Vesk::modes
