#include "System/Time/system.h"

#include <cstring>

namespace Qel {

void *(*cSystem::memcpy)(void *, void const *, std::size_t) = &std::memcpy;

bool cSystem::memcmp(unsigned char const *block, unsigned char value, unsigned int count)
{
    // Equal to itself moved by one: the standard function does that many bytes at a time.
    return count == 0 || (block[0] == value && std::memcmp(block, block + 1, count - 1) == 0);
}

} // namespace Qel
