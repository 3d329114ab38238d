#pragma once

#include "System/System/export.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Qel {

/// Finds an item of a cVarTable by its hash: the hashes side by side in the order of the items, the first of
/// them sorted. Part of the table, and of no use beside it.
class QEL_API VarTableIndex {
public:
    VarTableIndex() : m_hashes(padding) {}

    int find(std::uint32_t hash) const; ///< the item's place, or -1

    std::size_t size() const { return m_hashes.size() - padding; }
    std::uint32_t *data() { return m_hashes.data(); }

    void append(std::uint32_t hash);       ///< at the end, unsorted
    void setSorted(std::size_t newSorted); ///< the first @p newSorted hashes have been sorted
    void clear();

private:
    static constexpr std::size_t padding = 32; // as many hashes are looked at in one go, past the end too
    static constexpr std::size_t fewItems = 32;

    int findIn(std::size_t first, std::size_t last, std::uint32_t hash) const;
    int findSorted(std::uint32_t hash) const;
    void makeStarts() const;

    std::vector<std::uint32_t> m_hashes;
    std::size_t m_sorted = 0;

    // Where the hashes with the same upper bits start, counted from the lowest hash. Made when enough is
    // looked up to be worth it, so that a table which only grows never pays for it.
    mutable std::vector<std::uint32_t> m_starts;
    mutable std::uint32_t m_shift = 0;
    mutable std::size_t m_findsLeft = 0; // until it is made
    mutable bool m_hasStarts = false;
};

} // namespace Qel
