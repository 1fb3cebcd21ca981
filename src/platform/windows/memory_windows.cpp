#include "platform/memory.h"

namespace Vesk::platform {

// Large pages need a privilege that developers do not have.
void expectLargeHeap() noexcept {}

}  // namespace Vesk::platform
