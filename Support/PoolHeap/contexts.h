#pragma once

#include "Support/PoolHeap/poolHeap.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace PoolHeap::detail {

struct Context;

/// Blocks and bytes in one number: the bytes in the upper 20 bits, the blocks below. Sums and differences of
/// such numbers stay right in both parts, whether or not one passed the edge on the way, while the difference
/// in the end is below 512 KiB and 2^43 blocks either way; and they are in the order of their bytes.
struct Amount {
    static constexpr int byteShift = 44;

    std::int64_t value = 0;

    static constexpr Amount of(std::int64_t blocks, std::int64_t bytes)
    {
        return {static_cast<std::int64_t>((static_cast<std::uint64_t>(bytes) << byteShift) +
                                          static_cast<std::uint64_t>(blocks))};
    }

    // Rounded: a few blocks below 0 borrow from the bytes.
    constexpr std::int64_t bytes() const
    {
        return (value + (std::int64_t{1} << (byteShift - 1))) >> byteShift;
    }
    constexpr std::int64_t blocks() const
    {
        return static_cast<std::int64_t>(static_cast<std::uint64_t>(value) << (64 - byteShift)) >>
               (64 - byteShift);
    }
};
static_assert(Amount::of(-3, 5).bytes() == 5 && Amount::of(-3, 5).blocks() == -3);
static_assert(Amount::of(7, -65536).bytes() == -65536 && Amount::of(7, -65536).blocks() == 7);

/// What one thread has counted of one context since it last told the others: one line of the cache.
///
/// Only the owning thread writes, and atomically; it reads plainly, since a load that must be atomic is one
/// more instruction. Others read atomically. Taken and returned are apart so that a value's way through
/// memory is waited for half as often, and each is one number because that is half the work.
struct alignas(64) ThreadCount {
    std::uint32_t id = 0;
    Context *context = nullptr;
    std::int64_t taken = 0;    ///< an Amount
    std::int64_t returned = 0; ///< an Amount; may pass @c taken if others' blocks are freed here
    std::int64_t peak = 0;     ///< an Amount: the most that was taken and not returned
};
static_assert(sizeof(ThreadCount) == 64);

inline void publish(std::int64_t &value, std::int64_t now)
{
    std::atomic_ref(value).store(now, std::memory_order_relaxed);
}

/// A thread tells the others once its live bytes have moved by this much.
inline constexpr std::int64_t kUnfoldedBytes = std::int64_t{64} * 1024;

inline constexpr std::uint32_t kCountSlots = 16;

/// Where a thread keeps the count of @p id: one place only, so that one comparison tells.
constexpr std::uint32_t countSlot(std::uint32_t id)
{
    return (id * 0x9E3779B1U) >> 28;
}
static_assert(countSlot(0xFFFFFFFFU) < kCountSlots);

/// The counts of one thread, in the list of all threads' counts while the thread lives.
struct ThreadCounts {
    ThreadCount slots[kCountSlots];
    ThreadCounts *previous = nullptr;
    ThreadCounts *next = nullptr;
};

/// The contexts and their counts over all threads, behind one lock. Threads come here seldom.
namespace contexts {

void name(ContextInfo const &info);

void addThread(ThreadCounts &counts);

/// Adds all that the thread has counted to the contexts and forgets the thread.
void removeThread(ThreadCounts &counts);

/// Gives a context its place in a thread's counts; whoever stood there is added to its context.
/// @return false if there is no memory; the place is then as it was
bool enter(ThreadCount &slot, std::uint32_t id);

/// Adds what a thread has counted to its context.
void fold(ThreadCount &slot);

/// Counts one block at once: for a thread that has no counts of its own any more, and for blocks that do not
/// fit into an Amount.
/// @param slot    what the thread has counted before, or null
/// @param blocks  1 or -1
/// @return false if there is no memory for the context
bool countDirect(ThreadCount *slot, std::uint32_t id, std::int64_t blocks, std::int64_t bytes);

bool read(std::uint32_t id, ContextCounts &counts);
std::size_t readAll(ContextCounts *counts, std::size_t room);

} // namespace contexts

} // namespace PoolHeap::detail
