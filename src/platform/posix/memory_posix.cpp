#include "platform/memory.h"

#ifdef __GLIBC__
#include <cstdint>
#include <cstdlib>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace Vesk::platform {

#ifdef __GLIBC__

namespace {

constexpr int kReserved = 256 * 1024 * 1024;  ///< only what is touched becomes memory
constexpr int kOwnMapping = 4 * 1024 * 1024;
constexpr std::uintptr_t kLargePage = 2 * 1024 * 1024;

}  // namespace

void expectLargeHeap() noexcept {
    mallopt(M_MMAP_THRESHOLD, kOwnMapping);
    mallopt(M_TRIM_THRESHOLD, 4 * kReserved);
    mallopt(M_TOP_PAD, kReserved);
    void* const first = std::malloc(kLargePage);  // more than is left, so the heap grows now
    const std::uintptr_t start = reinterpret_cast<std::uintptr_t>(first);
    std::free(first);
    const std::uintptr_t end = reinterpret_cast<std::uintptr_t>(sbrk(0));
    if (first == nullptr || end < start) {
        return;  // the heap is somewhere else
    }
    // What lies before the first large page is taken and never touched.
    const std::uintptr_t page = (start + kLargePage - 1) / kLargePage * kLargePage;
    static void* const before = std::malloc(page - start);
    if (before != nullptr && page < end) {
        madvise(reinterpret_cast<void*>(page), end - page, MADV_HUGEPAGE);  // it may refuse
    }
}

#else

void expectLargeHeap() noexcept {}

#endif

}  // namespace Vesk::platform
