#include "Support/PoolHeap/poolHeap.h"

#include "Support/PoolHeap/centralLists.h"
#include "Support/PoolHeap/contexts.h"
#include "Support/PoolHeap/sizeClasses.h"

#include <cstdio>
#include <cstdlib>
#include <new>

namespace PoolHeap {

using namespace detail;

Config the_config;

namespace {

constexpr auto relaxed = std::memory_order_relaxed;

// What a thread owns: its counts, and of each class a stack of blocks. A stack of pointers beside the blocks
// keeps both directions off the blocks' own memory, and its height is all the bookkeeping there is.
struct ThreadHeap {
    std::uint32_t heights[kClasses] = {};
    ThreadCounts counts;
    void *blocks[kClasses][kCapacity];
};

// initial-exec: one load from the thread's own segment, no call. Eight bytes are small enough for the room
// that the loader sets aside for libraries that come late.
[[gnu::tls_model("initial-exec")]] constinit thread_local ThreadHeap *theHeap = nullptr;
[[gnu::tls_model("initial-exec")]] constinit thread_local bool theThreadEnds = false;

void giveAllBack(ThreadHeap &heap)
{
    for (std::size_t sizeClass = 0; sizeClass < kClasses; ++sizeClass) {
        central::give(sizeClass, heap.blocks[sizeClass], heap.heights[sizeClass]);
        heap.heights[sizeClass] = 0;
    }
}

// Its destructor runs when the thread ends. Objects that die after it go to the central lists directly.
struct ThreadEnd {
    bool armed = false;
    ~ThreadEnd()
    {
        ThreadHeap *heap = theHeap;
        theHeap = nullptr;
        theThreadEnds = true;
        if (!heap)
            return;
        giveAllBack(*heap);
        contexts::removeThread(heap->counts);
        std::free(heap);
    }
};
thread_local ThreadEnd theEnd;

// @return null if the thread is past its end, or if there is no memory
ThreadHeap *makeHeap()
{
    if (theThreadEnds)
        return nullptr;
    void *memory = std::aligned_alloc(alignof(ThreadHeap), sizeof(ThreadHeap));
    if (!memory)
        return nullptr;
    auto *heap = new (memory) ThreadHeap;
    contexts::addThread(heap->counts);
    theHeap = heap;
    theEnd.armed = true;
    return heap;
}

// Counts off the hot path. @return false if there is no memory for the context
bool countAlloc(ThreadHeap *heap, std::size_t size, std::uint32_t context)
{
    if (!heap)
        return contexts::countDirect(context, 1, static_cast<std::int64_t>(size));
    ThreadCount &count = heap->counts.slots[countSlot(context)];
    if (count.id != context && !contexts::enter(count, context))
        return false;
    std::int64_t const bytes = count.bytes.load(relaxed) + static_cast<std::int64_t>(size);
    count.allocations.store(count.allocations.load(relaxed) + 1, relaxed);
    count.bytes.store(bytes, relaxed);
    if (bytes > count.peak.load(relaxed)) {
        count.peak.store(bytes, relaxed);
        if (bytes > kUnfoldedBytes)
            contexts::fold(count);
    }
    return true;
}

void countFree(ThreadHeap *heap, std::size_t size, std::uint32_t context)
{
    if (!heap) {
        contexts::countDirect(context, -1, -static_cast<std::int64_t>(size));
        return;
    }
    ThreadCount &count = heap->counts.slots[countSlot(context)];
    if (count.id != context && !contexts::enter(count, context))
        return;
    std::int64_t const bytes = count.bytes.load(relaxed) - static_cast<std::int64_t>(size);
    count.releases.store(count.releases.load(relaxed) + 1, relaxed);
    count.bytes.store(bytes, relaxed);
    if (bytes < -kUnfoldedBytes)
        contexts::fold(count);
}

void *takeBlock(ThreadHeap *heap, std::size_t blockSize)
{
    if (QEL_POOLHEAP_PLAIN || blockSize > kSmallLimit)
        return std::malloc(blockSize);
    std::size_t const sizeClass = classOf(blockSize);
    if (!heap) {
        void *block = nullptr;
        central::take(sizeClass, &block, 1);
        return block;
    }
    std::uint32_t &height = heap->heights[sizeClass];
    if (height == 0) {
        height = central::take(sizeClass, heap->blocks[sizeClass], kBatch);
        if (height == 0)
            return nullptr;
    }
    return heap->blocks[sizeClass][--height];
}

void giveBlock(ThreadHeap *heap, void *block, std::size_t blockSize)
{
    if (QEL_POOLHEAP_PLAIN || blockSize > kSmallLimit) {
        std::free(block);
        return;
    }
    std::size_t const sizeClass = classOf(blockSize);
    if (!heap) {
        central::give(sizeClass, &block, 1);
        return;
    }
    std::uint32_t &height = heap->heights[sizeClass];
    if (height == kCapacity) {
        // The lower half leaves: it was freed longest ago, and the caches know it least.
        void **blocks = heap->blocks[sizeClass];
        central::give(sizeClass, blocks, kBatch);
        for (std::uint32_t i = kBatch; i < kCapacity; ++i)
            blocks[i - kBatch] = blocks[i];
        height -= kBatch;
    }
    heap->blocks[sizeClass][height++] = block;
}

[[gnu::noinline]] void *allocSlow(std::size_t blockSize, std::size_t size, std::uint32_t context)
{
    if (size > kLargestBlock)
        return nullptr;
    ThreadHeap *heap = theHeap ? theHeap : makeHeap();
    blockSize += blockSize == 0;
    void *block = takeBlock(heap, blockSize);
    if (block && !countAlloc(heap, size, context)) {
        giveBlock(heap, block, blockSize);
        return nullptr;
    }
    return block;
}

[[gnu::noinline]] void freeSlow(void *block, std::size_t blockSize, std::size_t size, std::uint32_t context)
{
    if (!block)
        return;
    ThreadHeap *heap = theHeap ? theHeap : makeHeap();
    blockSize += blockSize == 0;
    giveBlock(heap, block, blockSize);
    countFree(heap, size, context);
}

[[gnu::noinline]] void *foldAfterAlloc(ThreadCount &count, void *block)
{
    contexts::fold(count);
    return block;
}

// blockSize is what the block takes, size what is counted.
[[gnu::always_inline]] inline void *alloc(std::size_t blockSize, std::size_t size, std::uint32_t context)
{
    ThreadHeap *heap = theHeap;
    std::size_t const sizeClass = classOf(blockSize);
    if (QEL_POOLHEAP_PLAIN || !heap || sizeClass >= kClasses) [[unlikely]]
        return allocSlow(blockSize, size, context);
    ThreadCount &count = heap->counts.slots[countSlot(context)];
    std::uint32_t const height = heap->heights[sizeClass];
    if (count.id != context || height == 0) [[unlikely]]
        return allocSlow(blockSize, size, context);

    heap->heights[sizeClass] = height - 1;
    void *block = heap->blocks[sizeClass][height - 1];
    count.allocations.store(count.allocations.load(relaxed) + 1, relaxed);
    std::int64_t const bytes = count.bytes.load(relaxed) + static_cast<std::int64_t>(size);
    count.bytes.store(bytes, relaxed);
    if (bytes > count.peak.load(relaxed)) [[unlikely]] {
        count.peak.store(bytes, relaxed);
        if (bytes > kUnfoldedBytes)
            return foldAfterAlloc(count, block);
    }
    return block;
}

[[gnu::always_inline]] inline void free(void *block, std::size_t blockSize, std::size_t size,
                                        std::uint32_t context)
{
    ThreadHeap *heap = theHeap;
    std::size_t const sizeClass = classOf(blockSize);
    if (QEL_POOLHEAP_PLAIN || !block || !heap || sizeClass >= kClasses) [[unlikely]]
        return freeSlow(block, blockSize, size, context);
    ThreadCount &count = heap->counts.slots[countSlot(context)];
    std::uint32_t const height = heap->heights[sizeClass];
    if (count.id != context || height == kCapacity) [[unlikely]]
        return freeSlow(block, blockSize, size, context);

    heap->blocks[sizeClass][height] = block;
    heap->heights[sizeClass] = height + 1;
    count.releases.store(count.releases.load(relaxed) + 1, relaxed);
    std::int64_t const bytes = count.bytes.load(relaxed) - static_cast<std::int64_t>(size);
    count.bytes.store(bytes, relaxed);
    if (bytes < -kUnfoldedBytes) [[unlikely]]
        contexts::fold(count);
}

#ifndef NDEBUG

// Debug builds put this before every small block, and so know what a caller should have told on release.
struct alignas(kStep) Mark {
    std::size_t size;
    std::uint32_t context;
    std::uint32_t state;
};
static_assert(sizeof(Mark) == kStep);
constexpr std::uint32_t kOut = 0x0C0FFEE5;
constexpr std::uint32_t kBack = 0xDEADB10C;

void *markedAlloc(std::size_t size, std::uint32_t context)
{
    if (size > kLargestBlock)
        return nullptr;
    void *memory = alloc(size + sizeof(Mark), size, context);
    if (!memory)
        return nullptr;
    return new (memory) Mark{size, context, kOut} + 1;
}

void markedFree(void *block, std::size_t size, std::uint32_t context)
{
    if (!block)
        return;
    Mark *mark = static_cast<Mark *>(block) - 1;
    Mark const told = *mark;
    bool const wasOut = told.state == kOut;
    if (!wasOut || told.size != size || told.context != context) {
        char text[192];
        if (wasOut)
            std::snprintf(text, sizeof(text),
                          "PoolHeap - block %p: freed as %zu bytes of context 0x%X, taken as %zu of 0x%X\n",
                          block, size, context, told.size, told.context);
        else
            std::snprintf(text, sizeof(text), "PoolHeap - block %p: %s\n", block,
                          told.state == kBack ? "freed twice" : "freed, but never given out");
        if (the_config.message)
            the_config.message(text);
        if (!wasOut) {
            if (the_config.breakpoint)
                the_config.breakpoint();
            return;
        }
    }
    mark->state = kBack;
    free(mark, told.size + sizeof(Mark), told.size, told.context);
}

#endif

} // namespace

void init()
{
}

void shutdown()
{
    if (ThreadHeap *heap = theHeap)
        giveAllBack(*heap);
    central::trim();
}

void context_init(ContextInfo info)
{
    contexts::name(info);
}

void *std_alloc(std::size_t size, std::uint32_t)
{
    return poolheap_malloc(size);
}

void std_free(void *block, std::uint32_t)
{
    std::free(block);
}

void *fast_alloc(std::size_t size, std::uint32_t context)
{
#ifdef NDEBUG
    return alloc(size, size, context);
#else
    return markedAlloc(size, context);
#endif
}

void fast_free(void *block, std::size_t size, std::uint32_t context)
{
#ifdef NDEBUG
    free(block, size, size, context);
#else
    markedFree(block, size, context);
#endif
}

bool context_counts(std::uint32_t context, ContextCounts &counts)
{
    return contexts::read(context, counts);
}

std::size_t all_context_counts(ContextCounts *counts, std::size_t room)
{
    return contexts::readAll(counts, room);
}

} // namespace PoolHeap

void *poolheap_malloc(std::size_t size)
{
    if (size > PoolHeap::detail::kLargestBlock)
        return nullptr;
    return std::malloc(size > 0 ? size : 1);
}

void poolheap_free(void *block)
{
    std::free(block);
}
