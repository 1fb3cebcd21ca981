#include "base/interruption.h"

#include "platform/interrupt.h"

namespace Vesk {

void stopIfInterrupted() {
    if (const int signal = platform::interruptSignal(); signal != 0) {
        throw Interrupted(signal);
    }
}

}  // namespace Vesk
