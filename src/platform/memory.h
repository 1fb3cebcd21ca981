// The memory of a process that has much to do.
#pragma once

namespace Vesk::platform {

/// From now on much memory is going to be taken, piece by piece. Where the system can, it comes in
/// pages of a large size: the first touch of each costs time. To be called once, early.
void expectLargeHeap() noexcept;

}  // namespace Vesk::platform
