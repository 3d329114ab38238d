#include "Support/PoolHeap/poolBlk.h"

#include "Support/PoolHeap/poolHeap.h"

#include <utility>

PoolBlk::PoolBlk(PoolBlk &&other) noexcept
    : m_data(std::exchange(other.m_data, nullptr)), m_size(std::exchange(other.m_size, 0)),
      m_memoryContext(other.m_memoryContext)
{
}

PoolBlk &PoolBlk::operator=(PoolBlk &&other) noexcept
{
    // By way of a third block: right for an assignment to itself, too.
    PoolBlk taken(std::move(other));
    std::swap(m_data, taken.m_data);
    std::swap(m_size, taken.m_size);
    std::swap(m_memoryContext, taken.m_memoryContext);
    return *this;
}

bool PoolBlk::alloc(std::uint32_t size, std::uint32_t memoryContext)
{
    void *data = PoolHeap::fast_alloc(size, memoryContext);
    if (!data) {
        return false;
    }
    free();
    m_data = data;
    m_size = size;
    m_memoryContext = memoryContext;
    return true;
}

void PoolBlk::free()
{
    PoolHeap::fast_free(m_data, m_size, m_memoryContext);
    m_data = nullptr;
    m_size = 0;
}
