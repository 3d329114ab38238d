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
    if (buffer == nullptr) {
        return 0;
    }
    auto const *const bytes = static_cast<unsigned char const *>(buffer);
    for (unsigned int i = 0; i < size; ++i) {
        if (!m_bits.writeBits(bytes[i], 8)) {
            return i;
        }
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
