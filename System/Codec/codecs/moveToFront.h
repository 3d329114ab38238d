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
    std::array<unsigned char, 256> m_table;
};

} // namespace Qel
