#pragma once

#include "Support/PoolHeap/poolHeap.h"

#include <cstddef>
#include <cstdint>
#include <new>
#include <type_traits>

namespace Qel {

/// A stateless allocator in the standard shape, which takes its blocks from PoolHeap's free lists and counts
/// them under a memory context.
///
/// @code
/// std::vector<Node, memtrack_allocator<Node, 0x5CE0E>> nodes;
/// @endcode
///
/// @tparam context  the PoolHeap memory context identifier
template <typename T, std::uint32_t context>
class QEL_API memtrack_allocator {
public:
    using value_type = T;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using propagate_on_container_move_assignment = std::true_type;
    using is_always_equal = std::true_type;

    /// The same context for another type.
    template <typename U>
    struct rebind {
        using other = memtrack_allocator<U, context>;
    };

    constexpr memtrack_allocator() noexcept = default;

    template <typename U>
    constexpr memtrack_allocator(memtrack_allocator<U, context> const &) noexcept
    {
    }

    /// Room for @p count objects, not initialised.
    /// @throws std::bad_array_new_length if that many can have no size, std::bad_alloc if there is no memory
    [[nodiscard]] T *allocate(std::size_t count)
    {
        static_assert(alignof(T) <= alignof(std::max_align_t), "PoolHeap aligns for the fundamental types");
        if (count > static_cast<std::size_t>(PTRDIFF_MAX) / sizeof(T)) {
            throw std::bad_array_new_length();
        }
        void *const block = PoolHeap::fast_alloc(count * sizeof(T), context);
        if (block == nullptr) {
            throw std::bad_alloc();
        }
        return static_cast<T *>(block);
    }

    /// Gives back what allocate() gave for the same @p count.
    void deallocate(T *block, std::size_t count) noexcept
    {
        PoolHeap::fast_free(block, count * sizeof(T), context);
    }

    template <typename U>
    friend constexpr bool operator==(memtrack_allocator const &,
                                     memtrack_allocator<U, context> const &) noexcept
    {
        return true;
    }
};

/// The memory context of all texts, "String data".
inline constexpr std::uint32_t stringMemoryContext = 0x8C76F20;

} // namespace Qel
