#pragma once

#include "System/System/export.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Qel {

/// Finds the place of a hash in a table that is sorted by hash, in one step.
///
/// It keeps, for each value of a hash's upper bits, where the entries with these begin, in about one entry a
/// value. So a lookup touches two numbers here and the entry itself.
class HashIndex {
public:
    struct Range {
        std::size_t first; ///< entries from here
        std::size_t last;  ///< to before this one may have the hash
    };

    /// Makes the index of a table.
    /// @param hashOf  gives an entry's hash; called for each in order
    template <class Table, class HashOf>
    void build(Table const &table, HashOf const &hashOf)
    {
        std::size_t const count = table.size();
        m_shift = 32 - std::clamp<unsigned>(static_cast<unsigned>(std::bit_width(count)), 1, 24);
        m_first.resize((std::size_t{1} << (32 - m_shift)) + 1);
        std::size_t value = 0;
        for (std::size_t i = 0; i < count; ++i) {
            for (std::size_t const of = hashOf(table[i]) >> m_shift; value <= of; ++value) {
                m_first[value] = static_cast<std::uint32_t>(i);
            }
        }
        std::fill(m_first.begin() + static_cast<std::ptrdiff_t>(value), m_first.end(),
                  static_cast<std::uint32_t>(count));
    }

    void clear() { m_first.clear(); }

    Range find(std::uint32_t hash) const
    {
        if (m_first.empty()) {
            return {0, 0};
        }
        std::uint32_t const *const at = m_first.data() + (hash >> m_shift);
        return {at[0], at[1]};
    }

private:
    std::vector<std::uint32_t> m_first;
    unsigned m_shift = 31;
};

} // namespace Qel
