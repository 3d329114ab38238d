#pragma once

#include <array>
#include <cstddef>

namespace Qel {

/// The table of cCodecMTF. The bytes may be coded in any number of pieces; source and target may be the same.
class MoveToFront {
public:
    MoveToFront();

    void encode(unsigned char const *from, unsigned char *to, std::size_t count);
    void decode(unsigned char const *from, unsigned char *to, std::size_t count);

private:
    // One pair for each way of processorLevel.h. With SSE4.2 the first 32 bytes of the table are in
    // registers, with AVX-512 all of them.
    void encodePlain(unsigned char const *from, unsigned char *to, std::size_t count);
    void decodePlain(unsigned char const *from, unsigned char *to, std::size_t count);
    void encodeSse42(unsigned char const *from, unsigned char *to, std::size_t count);
    void decodeSse42(unsigned char const *from, unsigned char *to, std::size_t count);
    void encodeAvx512(unsigned char const *from, unsigned char *to, std::size_t count);
    void decodeAvx512(unsigned char const *from, unsigned char *to, std::size_t count);

    void moveToFront(std::size_t place);

    alignas(64) std::array<unsigned char, 256> m_table;
};

} // namespace Qel
