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
        if (context->id == id) {
            return context;
        }
    }
    return nullptr;
}

// The system's allocator and not operator new: a host may have built its own operator new on this library.
Context *findOrMake(std::uint32_t id)
{
    if (Context *context = find(id)) {
        return context;
    }
    void *memory = std::malloc(sizeof(Context));
    if (!memory) {
        return nullptr;
    }
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

// The difference of two Amounts, by way of unsigned numbers since the bytes may have wrapped.
Amount minus(std::int64_t taken, std::int64_t returned)
{
    return {
        static_cast<std::int64_t>(static_cast<std::uint64_t>(taken) - static_cast<std::uint64_t>(returned))};
}

std::int64_t look(std::int64_t &value)
{
    return std::atomic_ref(value).load(std::memory_order_relaxed);
}

void addTo(Context &sum, ThreadCount &slot)
{
    std::int64_t const taken = look(slot.taken);
    std::int64_t const returned = look(slot.returned);
    sum.allocations += static_cast<std::uint64_t>(Amount{taken}.blocks());
    sum.releases += static_cast<std::uint64_t>(Amount{returned}.blocks());
    sum.bytes += minus(taken, returned).bytes();
}

void foldLocked(ThreadCount &slot)
{
    Context *context = slot.context;
    if (!context) {
        return;
    }
    context->peak = std::max(context->peak, context->bytes + Amount{look(slot.peak)}.bytes());
    addTo(*context, slot);
    publish(slot.taken, 0);
    publish(slot.returned, 0);
    publish(slot.peak, 0);
}

ContextCounts countsOf(Context const &context)
{
    Context sum = context;
    std::int64_t peak = context.bytes;
    for (ThreadCounts *thread = registry.threads; thread; thread = thread->next) {
        ThreadCount &slot = thread->slots[countSlot(context.id)];
        if (slot.context != &context) {
            continue;
        }
        addTo(sum, slot);
        peak += Amount{look(slot.peak)}.bytes();
    }
    ContextCounts counts;
    counts.name = sum.name;
    counts.id = sum.id;
    counts.allocations = sum.allocations;
    counts.liveBlocks = sum.allocations > sum.releases ? sum.allocations - sum.releases : 0;
    counts.liveBytes = static_cast<std::uint64_t>(std::max<std::int64_t>(sum.bytes, 0));
    counts.peakBytes = static_cast<std::uint64_t>(std::max({sum.peak, peak, sum.bytes, std::int64_t{0}}));
    return counts;
}

} // namespace

void name(ContextInfo const &info)
{
    std::lock_guard guard(registry.lock);
    if (Context *context = findOrMake(info.id)) {
        context->name = info.name;
    }
}

void addThread(ThreadCounts &counts)
{
    // An empty place holds an id that belongs elsewhere, so that it never passes for a hit.
    for (std::uint32_t i = 0; i < kCountSlots; ++i) {
        counts.slots[i].id = countSlot(0) == i ? 1 : 0;
    }
    static_assert(countSlot(0) != countSlot(1));

    std::lock_guard guard(registry.lock);
    counts.next = registry.threads;
    if (registry.threads) {
        registry.threads->previous = &counts;
    }
    registry.threads = &counts;
}

void removeThread(ThreadCounts &counts)
{
    std::lock_guard guard(registry.lock);
    for (ThreadCount &slot : counts.slots) {
        foldLocked(slot);
    }
    (counts.previous ? counts.previous->next : registry.threads) = counts.next;
    if (counts.next) {
        counts.next->previous = counts.previous;
    }
}

bool enter(ThreadCount &slot, std::uint32_t id)
{
    std::lock_guard guard(registry.lock);
    Context *context = findOrMake(id);
    if (!context) {
        return false;
    }
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

bool countDirect(ThreadCount *slot, std::uint32_t id, std::int64_t blocks, std::int64_t bytes)
{
    std::lock_guard guard(registry.lock);
    Context *context = findOrMake(id);
    if (!context) {
        return false;
    }
    if (slot) {
        foldLocked(*slot);
    }
    (blocks > 0 ? context->allocations : context->releases) += 1;
    context->bytes += bytes;
    context->peak = std::max(context->peak, context->bytes);
    return true;
}

bool read(std::uint32_t id, ContextCounts &counts)
{
    std::lock_guard guard(registry.lock);
    Context const *context = find(id);
    if (!context) {
        return false;
    }
    counts = countsOf(*context);
    return true;
}

std::size_t readAll(ContextCounts *counts, std::size_t room)
{
    std::lock_guard guard(registry.lock);
    std::size_t at = 0;
    for (Context const *context = registry.firstSeen; context && at < room; context = context->nextSeen) {
        counts[at++] = countsOf(*context);
    }
    return registry.count;
}

} // namespace contexts

} // namespace PoolHeap::detail
