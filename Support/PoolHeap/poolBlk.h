#pragma once

#include "Support/export.h"

#include <cstdint>

/// A block of loaded data that frees itself: what a file's contents travel in from an archive to a resource.
///
/// @code
/// PoolBlk block;
/// if (block.alloc(info.size, memoryContext))
///     read = archive->readFile(&info, block.data(), block.size(), info.handle);
/// @endcode
///
/// @par Ownership  Owns its memory. Moves, cannot be copied; a block that was moved from is empty.
/// @par Threads    Any thread may hold or free a block, one at a time.
class QEL_API PoolBlk {
public:
    PoolBlk() = default;
    ~PoolBlk() { free(); }

    PoolBlk(PoolBlk &&other) noexcept;
    PoolBlk &operator=(PoolBlk &&other) noexcept;
    PoolBlk(PoolBlk const &) = delete;
    PoolBlk &operator=(PoolBlk const &) = delete;

    /// Takes memory, with any content and aligned for every type. What the block held before is freed.
    /// @param size           bytes, 0 included: positions and sizes of files have 32 bits
    /// @param memoryContext  the context that it is counted under, see PoolHeap::context_counts()
    /// @return false if there is no memory; the block then keeps what it held
    bool alloc(std::uint32_t size, std::uint32_t memoryContext);

    /// Gives the memory back; the block is empty then.
    void free();

    void *data() { return m_data; }               ///< null if the block is empty
    void const *data() const { return m_data; }   ///< null if the block is empty
    std::uint32_t size() const { return m_size; } ///< bytes, as alloc() was told

private:
    void *m_data = nullptr;
    std::uint32_t m_size = 0;
    std::uint32_t m_memoryContext = 0;
};
