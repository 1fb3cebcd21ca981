#include "platform/memory.h"

#ifdef __GLIBC__
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <malloc.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>
#endif

namespace Vesk::platform {

#ifdef __GLIBC__

namespace {

constexpr int kReserved = 64 * 1024 * 1024;  ///< only what is touched becomes memory
constexpr int kOwnMapping = 4 * 1024 * 1024;
constexpr int kUsualGrowth = 128 * 1024;  ///< the allocator's own
constexpr std::uintptr_t kLargePage = 2 * 1024 * 1024;

/// Where the address space is limited, a large reservation leaves too little of it for the rest.
bool mayReserve() noexcept {
    return std::ranges::all_of(std::array{RLIMIT_AS, RLIMIT_DATA}, [](auto resource) {
        rlimit limit{};
        return getrlimit(resource, &limit) == 0 && limit.rlim_cur == RLIM_INFINITY;
    });
}

/// Makes the heap grow by what is reserved, and by the usual amounts after that. Where the new part
/// begins; 0 if there is none.
std::uintptr_t reserved() noexcept {
    mallopt(M_TOP_PAD, kReserved);
    void* const first = std::malloc(kLargePage);  // more than is left
    mallopt(M_TOP_PAD, kUsualGrowth);
    const auto start = reinterpret_cast<std::uintptr_t>(first);
    std::free(first);
    return start;
}

}  // namespace

void expectLargeHeap() noexcept {
    if (!mayReserve()) {
        return;
    }
    mallopt(M_MMAP_THRESHOLD, kOwnMapping);
    mallopt(M_TRIM_THRESHOLD, 4 * kReserved);
    const std::uintptr_t start = reserved();
    const auto end = reinterpret_cast<std::uintptr_t>(sbrk(0));
    if (start == 0 || end < start) {
        return;  // there is no memory, or the heap is somewhere else
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
