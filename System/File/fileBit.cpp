#include "System/File/fileBit.h"

namespace Qel {

cFileBit::~cFileBit() = default;

unsigned int cFileBit::read(void *buffer, unsigned int size)
{
    if (buffer == nullptr) {
        return 0;
    }
    auto *const bytes = static_cast<unsigned char *>(buffer);
    for (unsigned int i = 0; i < size; ++i) {
        bytes[i] = static_cast<unsigned char>(m_bits.readBits(8));
    }
    return size;
}

unsigned int cFileBit::write(void const *buffer, unsigned int size)
{
    if (buffer == nullptr || size == 0) {
        return 0;
    }
    auto const *const bytes = static_cast<unsigned char const *>(buffer);
    if (m_bits.holds(buffer)) {
        std::vector<unsigned char> const moved(bytes, bytes + size);
        return write(moved.data(), size);
    }
    // Room only: a field that ends the stream is the faster one to write.
    if (!m_bits.reserve((std::uint64_t{m_bits.position()} + 8 * std::uint64_t{size} + 7) / 8)) {
        return 0;
    }
    for (unsigned int i = 0; i < size; ++i) {
        m_bits.writeBits(bytes[i], 8);
    }
    return size;
}

void cFileBit::write_bits(unsigned int value, unsigned int count)
{
    if (count <= 32) {
        m_bits.writeBits(value, count == 0 ? 32 : count);
    }
}

unsigned int cFileBit::read_bits(unsigned int count)
{
    return count <= 32 ? m_bits.readBits(count == 0 ? 32 : count) : 0;
}

} // namespace Qel
