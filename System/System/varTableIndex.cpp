#include "System/System/varTableIndex.h"

#include "System/System/hashScan.h"

#include <algorithm>
#include <bit>

namespace Qel {

void VarTableIndex::append(std::uint32_t hash)
{
    m_hashes.push_back(0);
    m_hashes[size() - 1] = hash;
}

void VarTableIndex::setSorted(std::size_t newSorted)
{
    m_sorted = newSorted;
    m_hasStarts = false;
    m_findsLeft = newSorted / 16;
}

void VarTableIndex::clear()
{
    m_hashes.assign(padding, 0);
    m_starts.clear();
    setSorted(0);
}

int VarTableIndex::find(std::uint32_t hash) const
{
    if (size() <= fewItems) {
        return findIn(0, size(), hash);
    }
    int const at = findSorted(hash);
    return at >= 0 ? at : findIn(m_sorted, size(), hash);
}

// Looks at 32 hashes at once or at 16, so that no branch depends on where the wanted one is.
int VarTableIndex::findIn(std::size_t first, std::size_t last, std::uint32_t hash) const
{
    for (; first < last; first += 32) {
        std::uint32_t const *const hashes = m_hashes.data() + first;
        std::uint32_t found = detail::matching16(hashes, hash);
        if (last - first > 16) {
            found |= detail::matching16(hashes + 16, hash) << 16;
        }
        if (found != 0) {
            std::size_t const at = first + static_cast<std::size_t>(std::countr_zero(found));
            return at < last ? static_cast<int>(at) : -1;
        }
    }
    return -1;
}

int VarTableIndex::findSorted(std::uint32_t hash) const
{
    std::uint32_t const *const hashes = m_hashes.data();
    if (m_sorted == 0 || hash < hashes[0] || hash > hashes[m_sorted - 1]) {
        return -1;
    }
    std::uint32_t first = 0;
    auto last = static_cast<std::uint32_t>(m_sorted);
    if (m_hasStarts) {
        std::uint32_t const start = (hash - hashes[0]) >> m_shift;
        first = m_starts[start];
        // Mostly it is one of the first four, and where the fourth is no more sorted it is no match.
        std::uint32_t const past1 = hashes[first] < hash ? 1 : 0;
        std::uint32_t const past2 = hashes[first + 1] < hash ? past1 : 0;
        std::uint32_t const past3 = hashes[first + 2] < hash ? past2 : 0;
        std::uint32_t const at = first + past1 + past2 + past3;
        if (hashes[at] == hash && at < last) {
            return static_cast<int>(at);
        }
        last = m_starts[start + 1];
    } else if (m_findsLeft > 0) {
        --m_findsLeft;
    } else {
        makeStarts();
    }
    std::uint32_t const *const at = std::lower_bound(hashes + first, hashes + last, hash);
    return at != hashes + last && *at == hash ? static_cast<int>(at - hashes) : -1;
}

void VarTableIndex::makeStarts() const
{
    std::uint32_t const *const hashes = m_hashes.data();
    std::uint32_t const range = hashes[m_sorted - 1] - hashes[0];
    int const bits = static_cast<int>(std::bit_width(m_sorted)) - 1; // between one and two items on average
    m_shift = static_cast<std::uint32_t>(std::max(0, static_cast<int>(std::bit_width(range)) - bits));
    m_starts.resize((range >> m_shift) + 2);

    std::size_t start = 0;
    for (std::size_t i = 0; i < m_sorted; ++i) {
        for (std::size_t const own = (hashes[i] - hashes[0]) >> m_shift; start <= own; ++start) {
            m_starts[start] = static_cast<std::uint32_t>(i);
        }
    }
    m_starts[start] = static_cast<std::uint32_t>(m_sorted);
    m_hasStarts = true;
}

} // namespace Qel
