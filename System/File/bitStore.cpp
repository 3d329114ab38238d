#include "System/File/bitStore.h"

#include <algorithm>
#include <functional>
#include <new>

namespace Qel {

BitStore::BitStore(std::vector<unsigned char> const &source)
    : m_used(static_cast<std::uint32_t>(std::min<std::size_t>(source.size(), maxBytes)))
{
    m_bytes.reserve(std::size_t{m_used} + slack);
    m_bytes.assign(source.begin(), source.begin() + m_used);
    m_bytes.resize(std::size_t{m_used} + slack);
}

bool BitStore::growRoom(std::uint64_t count)
{
    if (count > maxBytes) {
        return false;
    }
    std::uint64_t const doubled = std::min<std::uint64_t>(2 * m_bytes.size(), maxBytes + slack);
    try {
        m_bytes.resize(static_cast<std::size_t>(std::max(doubled, count + slack)));
        return true;
    } catch (std::bad_alloc const &) {
        return false;
    }
}

bool BitStore::holds(void const *address) const
{
    auto const *const byte = static_cast<unsigned char const *>(address);
    return !std::less<>()(byte, m_bytes.data()) && std::less<>()(byte, m_bytes.data() + m_bytes.size());
}

void BitStore::align()
{
    std::uint64_t const aligned = (std::uint64_t{m_position} + 7) / 8 * 8;
    m_position = static_cast<std::uint32_t>(std::min<std::uint64_t>(aligned, std::uint64_t{maxBytes} * 8));
}

} // namespace Qel
