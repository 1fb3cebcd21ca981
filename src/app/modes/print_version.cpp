#include "app/build_info.h"
#include "app/modes/modes.h"
#include "app/version.h"
#include "base/console.h"

namespace Vesk::modes {

int printVersion(const Settings& settings) {
    console::normal("{}", settings.fullVersion ? buildInfo() : kVersion);
    return 0;
}

}  // namespace Vesk::modes
