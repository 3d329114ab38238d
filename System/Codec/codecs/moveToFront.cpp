#include "System/Codec/codecs/moveToFront.h"

#include <algorithm>
#include <cstring>
#include <numeric>

namespace Qel {

MoveToFront::MoveToFront()
{
    std::iota(m_table.begin(), m_table.end(), static_cast<unsigned char>(0));
}

void MoveToFront::encode(unsigned char const *from, unsigned char *to, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        unsigned char const c = from[i];
        auto const place =
            static_cast<std::size_t>(std::find(m_table.begin(), m_table.end(), c) - m_table.begin());
        to[i] = static_cast<unsigned char>(place);
        std::memmove(m_table.data() + 1, m_table.data(), place);
        m_table[0] = c;
    }
}

void MoveToFront::decode(unsigned char const *from, unsigned char *to, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        std::size_t const place = from[i];
        unsigned char const c = m_table[place];
        to[i] = c;
        std::memmove(m_table.data() + 1, m_table.data(), place);
        m_table[0] = c;
    }
}

} // namespace Qel
