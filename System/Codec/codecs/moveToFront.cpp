#include "System/Codec/codecs/moveToFront.h"

#include "Support/OS/processorLevel.h"

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
#if defined(__x86_64__)
    if (os::processorLevel() >= os::PROCESSOR_AVX512) {
        return encodeAvx512(from, to, count);
    }
    if (os::processorLevel() >= os::PROCESSOR_SSE42) {
        return encodeSse42(from, to, count);
    }
#endif
    encodePlain(from, to, count);
}

void MoveToFront::decode(unsigned char const *from, unsigned char *to, std::size_t count)
{
#if defined(__x86_64__)
    if (os::processorLevel() >= os::PROCESSOR_AVX512) {
        return decodeAvx512(from, to, count);
    }
    if (os::processorLevel() >= os::PROCESSOR_SSE42) {
        return decodeSse42(from, to, count);
    }
#endif
    decodePlain(from, to, count);
}

void MoveToFront::moveToFront(std::size_t place)
{
    unsigned char const c = m_table[place];
    std::memmove(m_table.data() + 1, m_table.data(), place);
    m_table[0] = c;
}

void MoveToFront::encodePlain(unsigned char const *from, unsigned char *to, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        auto const place = std::find(m_table.begin(), m_table.end(), from[i]) - m_table.begin();
        to[i] = static_cast<unsigned char>(place);
        moveToFront(static_cast<std::size_t>(place));
    }
}

void MoveToFront::decodePlain(unsigned char const *from, unsigned char *to, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        std::size_t const place = from[i];
        to[i] = m_table[place];
        moveToFront(place);
    }
}

} // namespace Qel
