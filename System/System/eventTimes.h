#pragma once

#include "System/System/export.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Qel {

/// The stamps of one kind of frame event, the oldest first: a ring that allocates only to grow.
class EventTimes {
public:
    std::size_t size() const { return m_size; }
    std::uint64_t front() const { return at(0); }         ///< the oldest; there must be one
    std::uint64_t back() const { return at(m_size - 1); } ///< the newest; there must be one

    /// The stamp at @p index, counted from the oldest; below size().
    std::uint64_t at(std::size_t index) const { return m_ring[(m_first + index) & (m_ring.size() - 1)]; }

    void push(std::uint64_t stamp)
    {
        if (m_size == m_ring.size()) {
            grow();
        }
        m_ring[(m_first + m_size) & (m_ring.size() - 1)] = stamp;
        ++m_size;
    }

    /// Drops the oldest @p count stamps, at most size().
    void dropFront(std::size_t count)
    {
        m_first = (m_first + count) & (m_ring.size() - 1);
        m_size -= count;
    }

    void clear()
    {
        m_first = 0;
        m_size = 0;
    }

private:
    void grow()
    {
        std::vector<std::uint64_t> larger(m_ring.size() * 2);
        for (std::size_t i = 0; i < m_size; ++i) {
            larger[i] = at(i);
        }
        m_ring.swap(larger);
        m_first = 0;
    }

    std::vector<std::uint64_t> m_ring = std::vector<std::uint64_t>(16); // a power of two of places
    std::size_t m_first = 0;
    std::size_t m_size = 0;
};

} // namespace Qel
