#include "Support/PoolHeap/poolHeap.h"

#include "Support/PoolHeap/centralLists.h"
#include "Support/PoolHeap/contexts.h"
#include "Support/PoolHeap/sizeClasses.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace PoolHeap {

using namespace detail; // NOLINT(google-build-using-namespace): the inner part of this very library

Config the_config;

namespace {

// A thread's free blocks of one class: a stack of pointers beside the blocks, so that neither direction
// touches a block's own memory. Below its bottom lies a null, which is what an empty stack gives out.
struct Stack {
    void **top; // the last block
    void **end; // where the last block of a full stack lies
};

constexpr std::size_t slotsBefore(std::size_t sizeClass)
{
    std::size_t slots = 0;
    for (std::size_t i = 0; i < sizeClass; ++i) {
        slots += capacityOf(i) + 1;
    }
    return slots;
}

// What a thread owns. The slots follow in the same block; pages of those that are never used stay untouched.
struct ThreadHeap {
    ThreadCounts counts;
    Stack stacks[kClasses];
};
constexpr std::size_t kHeapBytes = sizeof(ThreadHeap) + slotsBefore(kClasses) * sizeof(void *);

// Stands in for the heap of a thread that has none: every stack is empty and full at once, so that the one
// test of a stack sends such a thread off the hot path.
void *noSlot = nullptr;
template <std::size_t... classes>
consteval ThreadHeap makeNoHeap(std::index_sequence<classes...>)
{
    return {{}, {((void)classes, Stack{&noSlot, &noSlot})...}};
}
constinit ThreadHeap noHeap = makeNoHeap(std::make_index_sequence<kClasses>());

struct Thread {
    ThreadHeap *heap = &noHeap;
    ThreadCount *count = noHeap.counts.slots; // of the context that came last
    bool ended = false;
};

// initial-exec: one load from the thread's own segment, no call. It is small enough for the room that the
// loader sets aside for libraries that come late.
[[gnu::tls_model("initial-exec")]] constinit thread_local Thread here;

void initStacks(ThreadHeap &heap)
{
    auto **slots = reinterpret_cast<void **>(&heap + 1);
    for (std::size_t sizeClass = 0; sizeClass < kClasses; ++sizeClass) {
        *slots = nullptr;
        heap.stacks[sizeClass] = {slots, slots + capacityOf(sizeClass)};
        slots += capacityOf(sizeClass) + 1;
    }
}

std::uint32_t heightOf(Stack const &stack, std::size_t sizeClass)
{
    return static_cast<std::uint32_t>(capacityOf(sizeClass) -
                                      static_cast<std::size_t>(stack.end - stack.top));
}

void giveAllBack(ThreadHeap &heap)
{
    for (std::size_t sizeClass = 0; sizeClass < kClasses; ++sizeClass) {
        Stack &stack = heap.stacks[sizeClass];
        std::uint32_t const height = heightOf(stack, sizeClass);
        stack.top -= height;
        for (std::uint32_t given = 0; given < height; given += kBatch) {
            central::give(sizeClass, stack.top + 1 + given, std::min(kBatch, height - given));
        }
    }
}

// Its destructor runs when the thread ends. Objects that die after it go to the central lists directly.
struct ThreadEnd {
    bool armed = false;
    ~ThreadEnd()
    {
        ThreadHeap *heap = here.heap;
        here = Thread{.ended = true};
        if (heap == &noHeap) {
            return;
        }
        giveAllBack(*heap);
        contexts::removeThread(heap->counts);
        std::free(heap);
    }
};
thread_local ThreadEnd theEnd;

// The calling thread's heap, made when it is first needed.
// @return null if the thread is past its end, or if there is no memory
ThreadHeap *heapOfThread()
{
    if (here.heap != &noHeap) {
        return here.heap;
    }
    if (here.ended) {
        return nullptr;
    }
    constexpr std::size_t aligned =
        (kHeapBytes + alignof(ThreadHeap) - 1) / alignof(ThreadHeap) * alignof(ThreadHeap);
    void *memory = std::aligned_alloc(alignof(ThreadHeap), aligned);
    if (!memory) {
        return nullptr;
    }
    auto *heap = new (memory) ThreadHeap;
    initStacks(*heap);
    contexts::addThread(heap->counts);
    here.heap = heap;
    theEnd.armed = true;
    return heap;
}

// Counts a block, and hands it through: whatever must be called is then called last, and saves no register.
[[gnu::noinline]] void *foldAfterAlloc(ThreadCount &count, void *block)
{
    contexts::fold(count);
    return block;
}

// Adds to a value that only the calling thread writes. @return the sum
std::int64_t bump(std::int64_t &value, std::int64_t by)
{
    std::int64_t sum = 0;
    __builtin_add_overflow(value, by, &sum); // wraps: only differences count
    publish(value, sum);
    return sum;
}

std::int64_t difference(std::int64_t taken, std::int64_t returned)
{
    std::int64_t live = 0;
    __builtin_sub_overflow(taken, returned, &live);
    return live;
}

// For blocks of up to kUnfoldedBytes.
[[gnu::always_inline]] inline void *noteAlloc(ThreadCount &count, std::size_t size, void *block)
{
    std::int64_t const taken = bump(count.taken, Amount::of(1, static_cast<std::int64_t>(size)).value);
    std::int64_t const live = difference(taken, count.returned);
    if (live > count.peak) [[unlikely]] {
        publish(count.peak, live);
        if (live > Amount::of(0, kUnfoldedBytes).value) {
            return foldAfterAlloc(count, block);
        }
    }
    return block;
}

[[gnu::always_inline]] inline void noteFree(ThreadCount &count, std::size_t size)
{
    std::int64_t const returned = bump(count.returned, Amount::of(1, static_cast<std::int64_t>(size)).value);
    std::int64_t const live = difference(count.taken, returned);
    if (live < Amount::of(0, -kUnfoldedBytes).value) {
        [[unlikely]] contexts::fold(count);
    }
}

// Counts off the hot path. @return false if there is no memory for the context
bool countSlow(ThreadHeap *heap, bool taken, std::size_t size, std::uint32_t context)
{
    ThreadCount *count = heap ? &heap->counts.slots[countSlot(context)] : nullptr;
    if (count && count->id != context && !contexts::enter(*count, context)) {
        return false;
    }
    if (count) {
        here.count = count;
    }
    auto const bytes = static_cast<std::int64_t>(size);
    if (!count || bytes > kUnfoldedBytes) {
        return contexts::countDirect(count, context, taken ? 1 : -1, taken ? bytes : -bytes);
    }
    if (taken) {
        noteAlloc(*count, size, nullptr);
    } else {
        noteFree(*count, size);
    }
    return true;
}

void *takeBlock(ThreadHeap *heap, std::size_t blockSize)
{
    if (QEL_POOLHEAP_PLAIN || blockSize > kSmallLimit) {
        return std::malloc(blockSize);
    }
    std::size_t const sizeClass = classOf(blockSize);
    if (!heap) {
        void *block = nullptr;
        central::take(sizeClass, &block, 1);
        return block;
    }
    Stack &stack = heap->stacks[sizeClass];
    if (!*stack.top) {
        stack.top += central::take(sizeClass, stack.top + 1, kBatch);
    }
    void *block = *stack.top;
    stack.top -= block != nullptr;
    return block;
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
    Stack &stack = heap->stacks[sizeClass];
    if (stack.top == stack.end) {
        // The lowest leave: they were freed longest ago, and the caches know them least.
        std::uint32_t const height = heightOf(stack, sizeClass);
        void **bottom = stack.top - height + 1;
        central::give(sizeClass, bottom, kBatch);
        std::memmove(bottom, bottom + kBatch, (height - kBatch) * sizeof(void *));
        stack.top -= kBatch;
    }
    *++stack.top = block;
}

[[gnu::noinline]] void *allocSlow(std::size_t blockSize, std::size_t size, std::uint32_t context)
{
    if (size > kLargestBlock) {
        return nullptr;
    }
    ThreadHeap *heap = heapOfThread();
    blockSize += blockSize == 0;
    void *block = takeBlock(heap, blockSize);
    if (block && !countSlow(heap, true, size, context)) {
        giveBlock(heap, block, blockSize);
        return nullptr;
    }
    return block;
}

[[gnu::noinline]] void freeSlow(void *block, std::size_t blockSize, std::size_t size, std::uint32_t context)
{
    if (!block) {
        return;
    }
    ThreadHeap *heap = heapOfThread();
    blockSize += blockSize == 0;
    giveBlock(heap, block, blockSize);
    countSlow(heap, false, size, context);
}

// The stack for blocks of a size, without a look whether there is one. A stack is as large as a step between
// two classes, so the size itself is the offset.
Stack &stackOf(ThreadHeap &heap, std::size_t size)
{
    static_assert(sizeof(Stack) == kStep);
    return heap.stacks[classOf(size)];
}

// blockSize is what the block takes, size what is counted.
[[gnu::always_inline]] inline void *alloc(std::size_t blockSize, std::size_t size, std::uint32_t context)
{
    if (QEL_POOLHEAP_PLAIN || blockSize - 1 >= kSmallLimit) {
        [[unlikely]] return allocSlow(blockSize, size, context);
    }
    ThreadCount *const count = here.count;
    Stack &stack = stackOf(*here.heap, blockSize);
    void **const top = stack.top;
    void *const block = *top;
    if (!block || count->id != context) {
        [[unlikely]] return allocSlow(blockSize, size, context);
    }

    stack.top = top - 1;
    __builtin_prefetch(top[-1], 1); // the next one's memory: it has not been looked at since it was freed
    return noteAlloc(*count, size, block);
}

[[gnu::always_inline]] inline void free(void *block, std::size_t blockSize, std::size_t size,
                                        std::uint32_t context)
{
    if (QEL_POOLHEAP_PLAIN || !block || blockSize - 1 >= kSmallLimit) {
        [[unlikely]] return freeSlow(block, blockSize, size, context);
    }
    ThreadCount *const count = here.count;
    Stack &stack = stackOf(*here.heap, blockSize);
    void **const top = stack.top;
    if (top == stack.end || count->id != context) {
        [[unlikely]] return freeSlow(block, blockSize, size, context);
    }

    top[1] = block;
    stack.top = top + 1;
    noteFree(*count, size);
}

#ifndef NDEBUG

// Debug builds put this before every block of fast_alloc(), and so know what a caller should have told on
// release.
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
    if (size > kLargestBlock) {
        return nullptr;
    }
    void *memory = alloc(size + sizeof(Mark), size, context);
    if (!memory) {
        return nullptr;
    }
    return new (memory) Mark{size, context, kOut} + 1;
}

void markedFree(void *block, std::size_t size, std::uint32_t context)
{
    if (!block) {
        return;
    }
    Mark *mark = static_cast<Mark *>(block) - 1;
    Mark const told = *mark;
    bool const wasOut = told.state == kOut;
    if (!wasOut || told.size != size || told.context != context) {
        char text[192];
        if (wasOut) {
            std::snprintf(text, sizeof(text),
                          "PoolHeap - block %p: freed as %zu bytes of context 0x%X, taken as %zu of 0x%X\n",
                          block, size, context, told.size, told.context);
        } else {
            std::snprintf(text, sizeof(text), "PoolHeap - block %p: %s\n", block,
                          told.state == kBack ? "freed twice" : "freed, but never given out");
        }
        if (the_config.message) {
            the_config.message(text);
        }
        if (!wasOut) {
            if (the_config.breakpoint) {
                the_config.breakpoint();
            }
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
    if (here.heap != &noHeap) {
        giveAllBack(*here.heap);
    }
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

// Each of the two starts a line of the cache: they are short enough for that to show.
[[gnu::aligned(64)]] void *fast_alloc(std::size_t size, std::uint32_t context)
{
#ifdef NDEBUG
    return alloc(size, size, context);
#else
    return markedAlloc(size, context);
#endif
}

[[gnu::aligned(64)]] void fast_free(void *block, std::size_t size, std::uint32_t context)
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
    if (size > PoolHeap::detail::kLargestBlock) {
        return nullptr;
    }
    return std::malloc(size > 0 ? size : 1);
}

void poolheap_free(void *block)
{
    std::free(block);
}
