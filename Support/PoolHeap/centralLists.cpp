#include "Support/PoolHeap/centralLists.h"

#include <cstdlib>
#include <mutex>
#include <new>

namespace PoolHeap::detail::central {

namespace {

constexpr std::size_t kSpanBytes =
    std::size_t{256} * 1024; // also its alignment: a block finds its span by masking
constexpr std::uint32_t kKeptBatches = 8;
constexpr std::uint32_t kKeptSpans = 8;

// A free block. The first block of a batch also links to the next batch.
struct Free {
    Free *next;
    Free *nextBatch;
};
static_assert(sizeof(Free) <= kStep);

// A piece of memory cut into blocks of one class, from its head on as they are asked for, so that pages
// nobody needs yet stay untouched.
struct alignas(64) Span {
    Span *previous;
    Span *next;
    Free *free;
    std::uint32_t cut; // offset of the first byte never given out
    std::uint32_t out; // blocks given out
};

struct alignas(64) List {
    std::mutex lock;
    Free *batches = nullptr; // whole batches, ready to move on without a look at their spans
    std::uint32_t batchCount = 0;
    Span *open = nullptr; // spans that have a block to give
};

// Neither has a destructor that does anything: static objects of a host free their texts after it would run.
constinit List lists[kClasses];

struct Spare {
    std::mutex lock;
    Span *spans = nullptr;
    std::uint32_t count = 0;
};
constinit Spare spare;

Span *makeSpan()
{
    Span *span = nullptr;
    {
        std::lock_guard guard(spare.lock);
        if (spare.spans) {
            span = spare.spans;
            spare.spans = span->next;
            --spare.count;
        }
    }
    if (!span) {
        span = static_cast<Span *>(std::aligned_alloc(kSpanBytes, kSpanBytes));
    }
    if (span) {
        *span = Span{nullptr, nullptr, nullptr, sizeof(Span), 0};
    }
    return span;
}

void dropSpan(Span *span)
{
    std::lock_guard guard(spare.lock);
    if (spare.count >= kKeptSpans) {
        std::free(span);
        return;
    }
    span->next = spare.spans;
    spare.spans = span;
    ++spare.count;
}

void open(List &list, Span *span)
{
    span->previous = nullptr;
    span->next = list.open;
    if (list.open) {
        list.open->previous = span;
    }
    list.open = span;
}

void close(List &list, Span *span)
{
    (span->previous ? span->previous->next : list.open) = span->next;
    if (span->next) {
        span->next->previous = span->previous;
    }
}

bool hasBlock(Span const *span, std::size_t bytes)
{
    return span->free || span->cut + bytes <= kSpanBytes;
}

void *cutBlock(Span *span, std::size_t bytes)
{
    ++span->out;
    if (Free *block = span->free) {
        span->free = block->next;
        return block;
    }
    void *block = reinterpret_cast<char *>(span) + span->cut;
    span->cut += static_cast<std::uint32_t>(bytes);
    return block;
}

void returnBlock(List &list, void *block, std::size_t bytes)
{
    auto *span = reinterpret_cast<Span *>(static_cast<char *>(block) -
                                          (reinterpret_cast<std::uintptr_t>(block) & (kSpanBytes - 1)));
    bool const wasOpen = hasBlock(span, bytes);
    auto *freed = static_cast<Free *>(block);
    freed->next = span->free;
    span->free = freed;
    if (--span->out == 0) {
        if (wasOpen) {
            close(list, span);
        }
        dropSpan(span);
    } else if (!wasOpen) {
        open(list, span);
    }
}

} // namespace

std::uint32_t take(std::size_t sizeClass, void **blocks, std::uint32_t count)
{
    List &list = lists[sizeClass];
    std::size_t const bytes = classBytes(sizeClass);
    std::lock_guard guard(list.lock);
    if (count == kBatch && list.batches) {
        Free *block = list.batches;
        list.batches = block->nextBatch;
        --list.batchCount;
        for (std::uint32_t i = kBatch; i-- > 0; block = block->next) {
            blocks[i] = block;
        }
        return kBatch;
    }
    // Filled from the end: a thread takes its last block first, and so walks upwards through fresh memory.
    std::uint32_t left = count;
    while (left > 0) {
        Span *span = list.open;
        if (!span) {
            span = makeSpan();
            if (!span) {
                break;
            }
            open(list, span);
        }
        while (left > 0 && hasBlock(span, bytes)) {
            blocks[--left] = cutBlock(span, bytes);
        }
        if (!hasBlock(span, bytes)) {
            close(list, span);
        }
    }
    std::uint32_t const got = count - left;
    if (left > 0) {
        for (std::uint32_t i = 0; i < got; ++i) {
            blocks[i] = blocks[left + i];
        }
    }
    return got;
}

void give(std::size_t sizeClass, void *const *blocks, std::uint32_t count)
{
    List &list = lists[sizeClass];
    // The links of a batch are written before the lock is taken; in vain if there is no room for it.
    Free *batch = nullptr;
    for (std::uint32_t i = 0; i < count && count == kBatch; ++i) {
        batch = new (blocks[i]) Free{batch, nullptr};
    }

    std::lock_guard guard(list.lock);
    if (batch && list.batchCount < kKeptBatches) {
        batch->nextBatch = list.batches;
        list.batches = batch;
        ++list.batchCount;
        return;
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        returnBlock(list, blocks[i], classBytes(sizeClass));
    }
}

void trim()
{
    for (std::size_t sizeClass = 0; sizeClass < kClasses; ++sizeClass) {
        List &list = lists[sizeClass];
        std::lock_guard guard(list.lock);
        while (Free *block = list.batches) {
            list.batches = block->nextBatch;
            --list.batchCount;
            while (block) {
                Free *next = block->next;
                returnBlock(list, block, classBytes(sizeClass));
                block = next;
            }
        }
    }
    std::lock_guard guard(spare.lock);
    while (Span *span = spare.spans) {
        spare.spans = span->next;
        std::free(span);
    }
    spare.count = 0;
}

} // namespace PoolHeap::detail::central
