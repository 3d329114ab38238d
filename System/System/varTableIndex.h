#pragma once

#include "System/System/export.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Qel {

/// Finds an item of a cVarTable by its hash. Part of the table, and of no use beside it.
///
/// Hashes lie scattered over slots, each within 16 slots of its home, so that one look at 16 slots finds it
/// or tells that it is not there. Up to 16 hashes lie in a row and need no homes.
class QEL_API VarTableIndex {
public:
    int find(std::uint32_t hash) const; ///< the item's place, or -1

    /// Adds the item behind the last one. Its hash must not be there yet.
    /// @throws std::bad_alloc if there is no memory; nothing has changed then
    void append(std::uint32_t hash);

    void clear();

private:
    struct Entry {
        std::uint32_t hash;
        std::uint32_t place;
    };

    std::size_t home(std::uint32_t hash) const
    {
        return static_cast<std::size_t>(hash * m_factor >> m_shift);
    }
    bool enter(Entry entry);
    void scatter(Entry added);

    std::vector<std::uint32_t> m_hashes; // by slot; 0 in one that is free
    std::vector<std::uint32_t> m_places; // by slot, counted from 1; 0 in one that is free. Empty if in a row
    std::uint32_t m_count = 0;
    std::uint32_t m_shift = 0; // leaves the number of a slot
    std::uint64_t m_factor = 0;
};

} // namespace Qel
