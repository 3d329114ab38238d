#pragma once

#include "System/System/export.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Qel {

/// Finds the entries of a hash in a table that is sorted by hash, in one step.
///
/// It keeps a copy of the hashes, so that a search touches nothing else, and for each value of their upper
/// bits where the entries with these begin: about four of them, whose hashes are compared all at once.
class HashIndex {
public:
    struct Range {
        std::size_t first; ///< entries from here
        std::size_t last;  ///< to before this one have the hash
    };

    /// Makes the index of a table.
    /// @param hashOf  gives an entry's hash
    template <class Table, class HashOf>
    void build(Table const &table, HashOf const &hashOf)
    {
        m_count = table.size();
        m_hashes.resize(m_count + window);
        for (std::size_t i = 0; i < m_count; ++i) {
            m_hashes[i] = hashOf(table[i]);
        }
        std::fill(m_hashes.begin() + static_cast<std::ptrdiff_t>(m_count), m_hashes.end(), 0xFFFFFFFF);

        m_shift = 32 - std::clamp(static_cast<unsigned>(std::bit_width(m_count / 4)), 1u, 24u);
        m_first.resize((std::size_t{1} << (32 - m_shift)) + 1);
        std::size_t value = 0;
        for (std::size_t i = 0; i < m_count; ++i) {
            for (; value <= m_hashes[i] >> m_shift; ++value) {
                m_first[value] = static_cast<std::uint32_t>(i);
            }
        }
        for (; value < m_first.size(); ++value) {
            m_first[value] = static_cast<std::uint32_t>(m_count);
        }
    }

    void clear() { m_count = 0; }

    Range find(std::uint32_t hash) const
    {
        if (m_count == 0) {
            return {0, 0};
        }
        std::uint32_t const *const from = m_first.data() + (hash >> m_shift);
        std::size_t first = from[0];
        if (from[1] - first <= window) {
            // Behind those with these upper bits stand greater ones, so no count is needed and no branch.
            std::uint32_t const *const hashes = m_hashes.data() + first;
            std::uint32_t less = 0;
            for (std::size_t i = 0; i < window; ++i) {
                less += hashes[i] < hash;
            }
            first += less;
        } else {
            first = place(std::lower_bound(at(first), at(from[1]), hash));
        }
        std::size_t last = first;
        while (last < m_count && m_hashes[last] == hash) {
            if (last - first == window) {
                return {first, place(std::upper_bound(at(last), at(from[1]), hash))};
            }
            ++last;
        }
        return {first, last};
    }

private:
    static constexpr std::size_t window = 16;

    std::vector<std::uint32_t>::const_iterator at(std::size_t i) const
    {
        return m_hashes.begin() + static_cast<std::ptrdiff_t>(i);
    }
    std::size_t place(std::vector<std::uint32_t>::const_iterator found) const
    {
        return static_cast<std::size_t>(found - m_hashes.begin());
    }

    std::size_t m_count = 0;
    std::vector<std::uint32_t> m_hashes; // and a window of the greatest behind them
    std::vector<std::uint32_t> m_first;  // by the upper bits
    unsigned m_shift = 31;
};

} // namespace Qel
