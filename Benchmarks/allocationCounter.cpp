#include "allocationCounter.h"

#include "Support/PoolHeap/poolHeap.h"

#include <algorithm>
#include <atomic>
#include <vector>

namespace {

std::atomic<bool> isCounting{false}; // peers beside it pay a look at this and no more
std::atomic<std::uint64_t> blocks{0};

void note()
{
    if (isCounting.load(std::memory_order_relaxed)) {
        blocks.fetch_add(1, std::memory_order_relaxed);
    }
}

std::uint64_t fromLists()
{
    static std::vector<PoolHeap::ContextCounts> contexts(256);
    std::size_t const count =
        std::min(contexts.size(), PoolHeap::all_context_counts(contexts.data(), contexts.size()));
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < count; ++i) {
        sum += contexts[i].allocations;
    }
    return sum;
}

} // namespace

// The C library's own, by the names that it keeps for programs which put theirs in front.
extern "C" {
void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *block, std::size_t size);
void *__libc_memalign(std::size_t alignment, std::size_t size);

[[gnu::visibility("default")]] void *malloc(std::size_t size) noexcept
{
    note();
    return __libc_malloc(size);
}

[[gnu::visibility("default")]] void *calloc(std::size_t count, std::size_t size) noexcept
{
    note();
    return __libc_calloc(count, size);
}

[[gnu::visibility("default")]] void *realloc(void *block, std::size_t size) noexcept
{
    note();
    return __libc_realloc(block, size);
}

[[gnu::visibility("default")]] void *aligned_alloc(std::size_t alignment, std::size_t size) noexcept
{
    note();
    return __libc_memalign(alignment, size);
}
}

AllocationCounter::AllocationCounter() : m_fromListsBefore(fromLists())
{
    blocks = 0;
    isCounting = true;
}

AllocationCounter::~AllocationCounter()
{
    isCounting = false;
}

std::uint64_t AllocationCounter::count() const
{
    return blocks + fromLists() - m_fromListsBefore;
}
