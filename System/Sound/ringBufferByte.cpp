#include "System/Sound/ringBufferByte.h"

#include "Support/PoolHeap/poolHeap.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>

namespace Qel {

namespace {

constexpr int largestSize = 1 << 30; // twice as much is still an index

bool isPowerOfTwo(int n)
{
    return n > 0 && std::has_single_bit(static_cast<unsigned int>(n));
}

// Any number of bytes, modulo 2^32: the masks keep what counts.
int moved(int index, int bytes)
{
    return static_cast<int>(static_cast<unsigned int>(index) + static_cast<unsigned int>(bytes));
}

} // namespace

RingBufferByte::~RingBufferByte()
{
    poolheap_free(m_buffer);
}

bool RingBufferByte::init(int size)
{
    if (!isPowerOfTwo(size) || size > largestSize) {
        return false;
    }
    auto *const fresh = static_cast<unsigned char *>(poolheap_malloc(static_cast<std::size_t>(size)));
    if (fresh == nullptr) {
        return false;
    }
    poolheap_free(m_buffer);
    m_buffer = fresh;
    m_size = size;
    m_bigMask = static_cast<int>(2u * static_cast<unsigned int>(size) - 1);
    m_smallMask = size - 1;
    flush();
    return true;
}

void RingBufferByte::close()
{
    poolheap_free(m_buffer);
    m_buffer = nullptr;
    m_size = m_bigMask = m_smallMask = 0;
    flush();
}

void RingBufferByte::flush()
{
    m_write = 0;
    m_read = 0;
}

int RingBufferByte::getReadAvailable() const
{
    return (m_write.load(std::memory_order_acquire) - m_read.load(std::memory_order_acquire)) & m_bigMask;
}

int RingBufferByte::regions(int index, int wanted, int available, void **p1, int *n1, void **p2, int *n2)
{
    // An index that was moved on too far makes more available than there is, or less than nothing.
    int const count = std::clamp(std::min(wanted, available), 0, m_size);
    int const at = index & m_smallMask;
    int const untilEnd = std::min(count, m_size - at);
    *p1 = m_buffer == nullptr ? nullptr : m_buffer + at;
    *n1 = untilEnd;
    *p2 = count > untilEnd ? m_buffer : nullptr;
    *n2 = count - untilEnd;
    return count;
}

int RingBufferByte::getWriteRegions(int count, void **p1, int *n1, void **p2, int *n2)
{
    return regions(m_write.load(std::memory_order_relaxed), count, getWriteAvailable(), p1, n1, p2, n2);
}

int RingBufferByte::getReadRegions(int count, void **p1, int *n1, void **p2, int *n2)
{
    return regions(m_read.load(std::memory_order_relaxed), count, getReadAvailable(), p1, n1, p2, n2);
}

int RingBufferByte::advanceWriteIndex(int bytes)
{
    int const next = moved(m_write.load(std::memory_order_relaxed), bytes) & m_bigMask;
    m_write.store(next, std::memory_order_release);
    return next;
}

int RingBufferByte::advanceReadIndex(int bytes)
{
    int const next = moved(m_read.load(std::memory_order_relaxed), bytes) & m_bigMask;
    m_read.store(next, std::memory_order_release);
    return next;
}

int RingBufferByte::write(void const *data, int bytes)
{
    void *p1;
    void *p2;
    int n1;
    int n2;
    int const total = getWriteRegions(bytes, &p1, &n1, &p2, &n2);
    if (total == 0) {
        return 0;
    }
    std::memcpy(p1, data, static_cast<std::size_t>(n1));
    if (n2 != 0) {
        std::memcpy(p2, static_cast<unsigned char const *>(data) + n1, static_cast<std::size_t>(n2));
    }
    advanceWriteIndex(total);
    return total;
}

int RingBufferByte::read(void *data, int bytes)
{
    void *p1;
    void *p2;
    int n1;
    int n2;
    int const total = getReadRegions(bytes, &p1, &n1, &p2, &n2);
    if (total == 0) {
        return 0;
    }
    std::memcpy(data, p1, static_cast<std::size_t>(n1));
    if (n2 != 0) {
        std::memcpy(static_cast<unsigned char *>(data) + n1, p2, static_cast<std::size_t>(n2));
    }
    advanceReadIndex(total);
    return total;
}

} // namespace Qel
