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

    /// The same by the instructions that every processor has.
    void encodePlain(unsigned char const *from, unsigned char *to, std::size_t count);
    void decodePlain(unsigned char const *from, unsigned char *to, std::size_t count);

private:
    // With SSSE3. They keep the first 32 bytes of the table in registers.
    void encodeSsse3(unsigned char const *from, unsigned char *to, std::size_t count);
    void decodeSsse3(unsigned char const *from, unsigned char *to, std::size_t count);

    void moveToFront(std::size_t place);

    alignas(16) std::array<unsigned char, 256> m_table;
};

} // namespace Qel
