#pragma once

#include <cstddef>
#include <cstdint>

/// Internals of the memory library. Nothing of this is installed or exported.
namespace PoolHeap::detail {

// A sanitizer sees single blocks only if each comes from the system's allocator by itself.
#if !defined(QEL_POOLHEAP_PLAIN)
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define QEL_POOLHEAP_PLAIN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
#define QEL_POOLHEAP_PLAIN 1
#endif
#endif
#endif
#if !defined(QEL_POOLHEAP_PLAIN)
#define QEL_POOLHEAP_PLAIN 0
#endif

inline constexpr std::size_t kStep = 16; ///< bytes between two size classes, and every block's alignment
inline constexpr std::size_t kSmallLimit = 512; ///< largest block that comes from the lists
inline constexpr std::size_t kClasses = kSmallLimit / kStep;
inline constexpr std::uint32_t kBatch = 64; ///< blocks that move between a thread and the central lists

/// More than this is refused at once, in every build alike.
inline constexpr std::size_t kLargestBlock = std::size_t{1} << 39;

/// The class of a size from 1 to kSmallLimit.
constexpr std::size_t classOf(std::size_t size)
{
    return (size - 1) / kStep;
}

constexpr std::size_t classBytes(std::size_t sizeClass)
{
    return (sizeClass + 1) * kStep;
}

/// Blocks that a thread keeps of one class: no more than 128 KiB of them.
constexpr std::size_t capacityOf(std::size_t sizeClass)
{
    std::size_t const blocks = std::size_t{128} * 1024 / classBytes(sizeClass);
    return blocks < 1024 ? blocks : 1024;
}

} // namespace PoolHeap::detail
