#include "System/File/bitStore.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace Qel {

namespace {

std::uint32_t reversed(std::uint32_t value)
{
    value = (value & 0x55555555) << 1 | (value >> 1 & 0x55555555);
    value = (value & 0x33333333) << 2 | (value >> 2 & 0x33333333);
    value = (value & 0x0F0F0F0F) << 4 | (value >> 4 & 0x0F0F0F0F);
    return __builtin_bswap32(value);
}

} // namespace

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

bool BitStore::writeBits(std::uint32_t value, std::uint32_t count)
{
    std::uint64_t const end = std::uint64_t{position} + count;
    std::uint64_t const needed = (end + 7) / 8;
    if (needed > bytes.size() && !grow(needed)) {
        return false;
    }
    // In the order of the stream the first bit is the lowest one: a field of n bits lies in at most 5 bytes.
    std::uint64_t field = std::uint64_t{reversed(value) >> (32 - count)} << position % 8;
    for (std::size_t at = position / 8; field != 0; ++at, field >>= 8) {
        bytes[at] = static_cast<unsigned char>(bytes[at] | (field & 0xFF));
    }
    position = static_cast<std::uint32_t>(end);
    highestBit = std::max(highestBit, position);
    return true;
}

std::uint32_t BitStore::readBits(std::uint32_t count)
{
    std::uint32_t const end = sizeInBits();
    if (position >= end) {
        return 0;
    }
    std::size_t const at = position / 8;
    std::uint64_t field = 0;
    std::memcpy(&field, bytes.data() + at, std::min<std::size_t>(sizeof(field), bytes.size() - at));
    field >>= position % 8;
    std::uint32_t const there = std::min(count, end - position);
    position += there;
    // Bits behind the end are zeros of the bytes that were not copied.
    return reversed(static_cast<std::uint32_t>(field)) >> (32 - count);
}

void BitStore::align()
{
    std::uint64_t const aligned = (std::uint64_t{position} + 7) / 8 * 8;
    position = static_cast<std::uint32_t>(std::min<std::uint64_t>(aligned, std::uint64_t{maxBytes} * 8));
}

} // namespace Qel
