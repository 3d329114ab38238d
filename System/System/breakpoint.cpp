#include "System/System/breakpoint.h"

namespace Qel {

Breakpoint::Breakpoint(void *address, int length, Condition condition)
{
    set(address, length, condition);
}

bool Breakpoint::set(void *, int, Condition)
{
    return false;
}

void Breakpoint::clear()
{
}

bool Breakpoint::singleStep()
{
    return false;
}

void Breakpoint::setBits(std::uint32_t &value, int position, int count, int bits)
{
    constexpr int width = 32;
    if (position < 0 || position >= width || count <= 0) {
        return;
    }
    std::uint32_t const ones = count < width ? (1u << count) - 1 : ~0u;
    std::uint32_t const mask = ones << position;
    value = (value & ~mask) | ((static_cast<std::uint32_t>(bits) << position) & mask);
}

} // namespace Qel
