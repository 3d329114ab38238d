#pragma once

#include "Support/PoolHeap/poolHeap.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace PoolHeap::detail {

struct Context;

/// What one thread has counted of one context since it last told the others: one line of the cache.
///
/// Only the owning thread writes; others read, so the values are atomic, but never need more than a plain
/// load and store.
struct alignas(64) ThreadCount {
    std::uint32_t id = 0;
    Context *context = nullptr;
    std::atomic<std::uint64_t> allocations = 0;
    std::atomic<std::uint64_t> releases = 0;
    std::atomic<std::int64_t> bytes = 0; ///< live bytes; below 0 if others' blocks are freed here
    std::atomic<std::int64_t> peak = 0;  ///< the most that @c bytes was
};

/// A thread tells the others once its live bytes have moved by this much.
inline constexpr std::int64_t kUnfoldedBytes = 64 * 1024;

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

/// Counts for a thread that has no counts of its own any more.
/// @return false if there is no memory for the context
bool countDirect(std::uint32_t id, std::int64_t blocks, std::int64_t bytes);

bool read(std::uint32_t id, ContextCounts &counts);
std::size_t readAll(ContextCounts *counts, std::size_t room);

} // namespace contexts

} // namespace PoolHeap::detail
