#include "Support/PoolHeap/contexts.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <new>

namespace PoolHeap::detail {

struct Context {
    std::uint32_t id = 0;
    char const *name = nullptr;
    std::uint64_t allocations = 0;
    std::uint64_t releases = 0;
    std::int64_t bytes = 0;
    std::int64_t peak = 0;
    Context *nextOfBucket = nullptr;
    Context *nextSeen = nullptr;
};

namespace contexts {

namespace {

constexpr std::size_t kBuckets = 1024;
constexpr auto relaxed = std::memory_order_relaxed;

// Lives for ever: contexts are read and counted after static objects have died.
struct Registry {
    std::mutex lock;
    Context *buckets[kBuckets] = {};
    Context *firstSeen = nullptr;
    Context *lastSeen = nullptr;
    std::size_t count = 0;
    ThreadCounts *threads = nullptr;
};
constinit Registry registry;

Context *&bucketOf(std::uint32_t id)
{
    return registry.buckets[(id * 0x9E3779B1U) >> 22];
}
static_assert(kBuckets == std::size_t{1} << (32 - 22));

Context *find(std::uint32_t id)
{
    for (Context *context = bucketOf(id); context; context = context->nextOfBucket) {
        if (context->id == id)
            return context;
    }
    return nullptr;
}

// The system's allocator and not operator new: a host may have built its own operator new on this library.
Context *findOrMake(std::uint32_t id)
{
    if (Context *context = find(id))
        return context;
    void *memory = std::malloc(sizeof(Context));
    if (!memory)
        return nullptr;
    auto *context = new (memory) Context;
    context->id = id;
    Context *&bucket = bucketOf(id);
    context->nextOfBucket = bucket;
    bucket = context;
    (registry.lastSeen ? registry.lastSeen->nextSeen : registry.firstSeen) = context;
    registry.lastSeen = context;
    ++registry.count;
    return context;
}

void foldLocked(ThreadCount &slot)
{
    Context *context = slot.context;
    if (!context)
        return;
    context->allocations += slot.allocations.load(relaxed);
    context->releases += slot.releases.load(relaxed);
    context->peak = std::max(context->peak, context->bytes + slot.peak.load(relaxed));
    context->bytes += slot.bytes.load(relaxed);
    slot.allocations.store(0, relaxed);
    slot.releases.store(0, relaxed);
    slot.bytes.store(0, relaxed);
    slot.peak.store(0, relaxed);
}

ContextCounts countsOf(Context const &context)
{
    std::uint64_t allocations = context.allocations;
    std::uint64_t releases = context.releases;
    std::int64_t bytes = context.bytes;
    std::int64_t peak = context.bytes;
    for (ThreadCounts const *thread = registry.threads; thread; thread = thread->next) {
        ThreadCount const &slot = thread->slots[countSlot(context.id)];
        if (slot.context != &context)
            continue;
        allocations += slot.allocations.load(relaxed);
        releases += slot.releases.load(relaxed);
        bytes += slot.bytes.load(relaxed);
        peak += slot.peak.load(relaxed);
    }
    ContextCounts counts;
    counts.name = context.name;
    counts.id = context.id;
    counts.allocations = allocations;
    counts.liveBlocks = allocations > releases ? allocations - releases : 0;
    counts.liveBytes = static_cast<std::uint64_t>(std::max<std::int64_t>(bytes, 0));
    counts.peakBytes = static_cast<std::uint64_t>(std::max({context.peak, peak, bytes, std::int64_t{0}}));
    return counts;
}

} // namespace

void name(ContextInfo const &info)
{
    std::lock_guard guard(registry.lock);
    if (Context *context = findOrMake(info.id))
        context->name = info.name;
}

void addThread(ThreadCounts &counts)
{
    // An empty place holds an id that belongs elsewhere, so that it never passes for a hit.
    for (std::uint32_t i = 0; i < kCountSlots; ++i)
        counts.slots[i].id = countSlot(0) == i ? 1 : 0;
    static_assert(countSlot(0) != countSlot(1));

    std::lock_guard guard(registry.lock);
    counts.next = registry.threads;
    if (registry.threads)
        registry.threads->previous = &counts;
    registry.threads = &counts;
}

void removeThread(ThreadCounts &counts)
{
    std::lock_guard guard(registry.lock);
    for (ThreadCount &slot : counts.slots)
        foldLocked(slot);
    (counts.previous ? counts.previous->next : registry.threads) = counts.next;
    if (counts.next)
        counts.next->previous = counts.previous;
}

bool enter(ThreadCount &slot, std::uint32_t id)
{
    std::lock_guard guard(registry.lock);
    Context *context = findOrMake(id);
    if (!context)
        return false;
    foldLocked(slot);
    slot.context = context;
    slot.id = id;
    return true;
}

void fold(ThreadCount &slot)
{
    std::lock_guard guard(registry.lock);
    foldLocked(slot);
}

bool countDirect(std::uint32_t id, std::int64_t blocks, std::int64_t bytes)
{
    std::lock_guard guard(registry.lock);
    Context *context = findOrMake(id);
    if (!context)
        return false;
    (blocks > 0 ? context->allocations : context->releases) += 1;
    context->bytes += bytes;
    context->peak = std::max(context->peak, context->bytes);
    return true;
}

bool read(std::uint32_t id, ContextCounts &counts)
{
    std::lock_guard guard(registry.lock);
    Context const *context = find(id);
    if (!context)
        return false;
    counts = countsOf(*context);
    return true;
}

std::size_t readAll(ContextCounts *counts, std::size_t room)
{
    std::lock_guard guard(registry.lock);
    std::size_t at = 0;
    for (Context const *context = registry.firstSeen; context && at < room; context = context->nextSeen)
        counts[at++] = countsOf(*context);
    return registry.count;
}

} // namespace contexts

} // namespace PoolHeap::detail
