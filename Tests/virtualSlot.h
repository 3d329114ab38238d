#pragma once

#include <cstddef>
#include <cstring>

/// The place of a virtual operation in its class's table, counted from 0, for tests of their order: plugins
/// are built against it.
template <class Class, class Result, class... Arguments>
std::size_t virtualSlot(Result (Class::*operation)(Arguments...))
{
    // A pointer to a virtual member is 1 plus the offset in the table, and an adjustment of the object.
    std::ptrdiff_t parts[2];
    static_assert(sizeof(parts) == sizeof(operation));
    std::memcpy(parts, &operation, sizeof(parts));
    return static_cast<std::size_t>(parts[0] - 1) / sizeof(void *);
}

template <class Class, class Result, class... Arguments>
std::size_t virtualSlot(Result (Class::*operation)(Arguments...) const)
{
    return virtualSlot(reinterpret_cast<Result (Class::*)(Arguments...)>(operation));
}

/// Whether these operations stand one behind the other from place @p first on.
template <class... Operations>
bool standInOrder(std::size_t first, Operations... operations)
{
    return ((virtualSlot(operations) == first++) && ...);
}
