#pragma once

#include "Support/PoolHeap/sizeClasses.h"

#include <cstddef>
#include <cstdint>

namespace PoolHeap::detail {

/// The blocks that no thread holds, a list and a lock for each size class. All operations on any thread.
namespace central {

/// Takes blocks of a class.
/// @param blocks  room for @p count pointers
/// @return blocks delivered: fewer than asked only if there is no memory
std::uint32_t take(std::size_t sizeClass, void **blocks, std::uint32_t count);

/// Takes blocks back.
void give(std::size_t sizeClass, void *const *blocks, std::uint32_t count);

/// Gives all memory back to the system that holds no block of a caller or of a thread's list.
void trim();

} // namespace central

} // namespace PoolHeap::detail
