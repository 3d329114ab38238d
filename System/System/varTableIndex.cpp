#include "System/System/varTableIndex.h"

#include "System/System/hashScan.h"

#include <bit>
#include <utility>

namespace Qel {

namespace {

constexpr std::size_t reach = 16; // slots that are looked at in one go

// The step of the generator SplitMix64 (Steele, Lea, Flood: Fast Splittable Pseudorandom Number Generators).
std::uint64_t mixed(std::uint64_t value)
{
    value += 0x9E3779B97F4A7C15u;
    value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9u;
    value = (value ^ (value >> 27)) * 0x94D049BB133111EBu;
    return value ^ (value >> 31);
}

} // namespace

int VarTableIndex::find(std::uint32_t hash) const
{
    if (m_places.empty()) {
        if (m_count == 0) {
            return -1;
        }
        // Free slots behind the last hash match nothing but 0, and then come after it.
        std::uint32_t const found = detail::matching16(m_hashes.data(), hash);
        int const at = std::countr_zero(found);
        return at < static_cast<int>(m_count) ? at : -1;
    }
    std::size_t const first = home(hash);
    std::uint32_t found = detail::matching16(m_hashes.data() + first, hash);
    for (; found != 0; found &= found - 1) {
        std::uint32_t const place = m_places[first + static_cast<std::size_t>(std::countr_zero(found))];
        if (place != 0) {
            return static_cast<int>(place - 1);
        }
    }
    return -1;
}

void VarTableIndex::append(std::uint32_t hash)
{
    Entry const added{hash, m_count};
    if (m_places.empty() && m_count < reach) {
        m_hashes.resize(reach);
        m_hashes[m_count] = hash;
    } else if (m_places.empty() || m_count >= (m_places.size() - reach) / 2 || !enter(added)) {
        scatter(added);
    }
    ++m_count;
}

void VarTableIndex::clear()
{
    *this = VarTableIndex();
}

// Fails if all slots in reach are taken.
bool VarTableIndex::enter(Entry entry)
{
    std::size_t const first = home(entry.hash);
    for (std::size_t slot = first; slot < first + reach; ++slot) {
        if (m_places[slot] == 0) {
            m_hashes[slot] = entry.hash;
            m_places[slot] = entry.place + 1;
            return true;
        }
    }
    return false;
}

// The factor differs from table to table and from run to run: no choice of keys, made before, can crowd the
// slots of a home. If they crowd by chance, another factor and more slots are tried.
void VarTableIndex::scatter(Entry added)
{
    std::vector<Entry> entries{added};
    entries.reserve(m_count + 1u);
    for (std::uint32_t slot = 0; slot < m_hashes.size() && m_places.empty(); ++slot) {
        entries.push_back({m_hashes[slot], slot});
    }
    for (std::size_t slot = 0; slot < m_places.size(); ++slot) {
        if (m_places[slot] != 0) {
            entries.push_back({m_hashes[slot], m_places[slot] - 1});
        }
    }

    VarTableIndex wider;
    wider.m_count = m_count;
    wider.m_factor = m_factor != 0 ? m_factor : reinterpret_cast<std::uintptr_t>(m_hashes.data());
    bool fits = false;
    for (std::size_t slots = std::bit_ceil(entries.size() * 2); !fits; slots *= 2) {
        wider.m_factor = mixed(wider.m_factor) | 1;
        wider.m_shift = static_cast<std::uint32_t>(64 - std::countr_zero(slots));
        wider.m_hashes.assign(slots + reach, 0);
        wider.m_places.assign(slots + reach, 0);
        fits = true;
        for (Entry const &entry : entries) {
            fits = fits && wider.enter(entry);
        }
    }
    *this = std::move(wider);
}

} // namespace Qel
