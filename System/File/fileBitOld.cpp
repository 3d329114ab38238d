#include "System/File/fileBitOld.h"

#include <algorithm>
#include <cstring>

namespace Qel {

cFileBitOld::~cFileBitOld() = default;

unsigned int cFileBitOld::read(void *buffer, unsigned int size)
{
    if (buffer == nullptr) {
        return 0;
    }
    m_bits.align();
    std::size_t const at = m_bits.position() / 8;
    std::size_t const held = m_bits.numBytes();
    std::size_t const there = std::min<std::size_t>(size, held > at ? held - at : 0);
    auto *const bytes = static_cast<unsigned char *>(buffer);
    if (there > 0) {
        std::memcpy(bytes, m_bits.data() + at, there);
    }
    std::memset(bytes + there, 0, size - there);
    m_bits.seek(static_cast<std::uint32_t>(std::min<std::size_t>(at + size, BitStore::maxBytes) * 8));
    return size;
}

unsigned int cFileBitOld::write(void const *buffer, unsigned int size)
{
    if (buffer == nullptr) {
        return 0;
    }
    if (size > 0 && m_bits.holds(buffer)) {
        auto const *const bytes = static_cast<unsigned char const *>(buffer);
        std::vector<unsigned char> const moved(bytes, bytes + size);
        return write(moved.data(), size);
    }
    m_bits.align();
    std::uint64_t const end = std::uint64_t{m_bits.position()} / 8 + size;
    if (!m_bits.grow(end)) {
        return 0;
    }
    if (size > 0) {
        std::memcpy(m_bits.data() + m_bits.numBytes() - size, buffer, size);
    }
    m_bits.seek(static_cast<std::uint32_t>(end * 8));
    return size;
}

void cFileBitOld::write_bits(unsigned int, unsigned int)
{
}

unsigned int cFileBitOld::read_bits(unsigned int)
{
    return 0;
}

} // namespace Qel
