#include "System/File/bitStore.h"

#include <algorithm>
#include <functional>
#include <new>

namespace Qel {

BitStore::BitStore(std::vector<unsigned char> const &source)
    : bytes(source.begin(),
            source.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(source.size(), maxBytes)))
{
}

bool BitStore::grow(std::uint64_t count)
{
    if (count > maxBytes) {
        return false;
    }
    try {
        bytes.resize(std::max(bytes.size(), static_cast<std::size_t>(count)));
        return true;
    } catch (std::bad_alloc const &) {
        return false;
    }
}

std::uint32_t BitStore::readLastBits(std::uint32_t count)
{
    std::uint32_t const end = sizeInBits();
    if (position >= end) {
        return 0;
    }
    // What is not copied are the zeros behind the end.
    std::size_t const at = position / 8;
    std::uint64_t field = 0;
    std::memcpy(&field, bytes.data() + at, std::min<std::size_t>(sizeof(field), bytes.size() - at));
    field >>= position % 8;
    position += std::min(count, end - position);
    return reversed(static_cast<std::uint32_t>(field)) >> (32 - count);
}

bool BitStore::holds(void const *address) const
{
    auto const *const byte = static_cast<unsigned char const *>(address);
    return !std::less<>()(byte, bytes.data()) && std::less<>()(byte, bytes.data() + bytes.size());
}

void BitStore::align()
{
    std::uint64_t const aligned = (std::uint64_t{position} + 7) / 8 * 8;
    position = static_cast<std::uint32_t>(std::min<std::uint64_t>(aligned, std::uint64_t{maxBytes} * 8));
}

} // namespace Qel
