#include "driver/build_events.h"

namespace Vesk {

BuildEvents& noEvents() noexcept {
    static BuildEvents events;
    return events;
}

}  // namespace Vesk
