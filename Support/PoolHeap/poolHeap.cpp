#include "Support/PoolHeap/poolHeap.h"

#include <cstdlib>

namespace PoolHeap {

Config the_config;

void init() {}

void shutdown() {}

void context_init(ContextInfo) {}

void *std_alloc(std::size_t size, std::uint32_t)
{
    return std::malloc(size);
}

void std_free(void *block, std::uint32_t)
{
    std::free(block);
}

void *fast_alloc(std::size_t size, std::uint32_t)
{
    return std::malloc(size);
}

void fast_free(void *block, std::size_t, std::uint32_t)
{
    std::free(block);
}

bool context_counts(std::uint32_t, ContextCounts &)
{
    return false;
}

std::size_t all_context_counts(ContextCounts *, std::size_t)
{
    return 0;
}

} // namespace PoolHeap

void *poolheap_malloc(std::size_t size)
{
    return std::malloc(size);
}

void poolheap_free(void *block)
{
    std::free(block);
}
