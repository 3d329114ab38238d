// Small blocks: PoolHeap, counting included, against the system's allocator, tcmalloc's sized calls and
// mimalloc. The peers are opened locally, so that none of them becomes this program's malloc.

#include "Support/PoolHeap/poolHeap.h"

#include <benchmark/benchmark.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <thread>
#include <vector>

#include <dlfcn.h>

namespace {

constexpr std::size_t kLive = 4096;
constexpr std::size_t kSteps = 16384;

template <typename Function>
Function symbolOf(char const *module, char const *symbol)
{
    void *handle = dlopen(module, RTLD_NOW | RTLD_LOCAL);
    void *address = handle ? dlsym(handle, symbol) : nullptr;
    if (!address) {
        std::fprintf(stderr, "%s: %s not found\n", module, symbol);
        std::exit(1);
    }
    return reinterpret_cast<Function>(address);
}

using Alloc = void *(*)(std::size_t);
using Free = void (*)(void *);
using SizedFree = void (*)(void *, std::size_t);

struct Pool {
    static void *alloc(std::size_t size) { return PoolHeap::fast_alloc(size, 0x8C76F20); }
    static void free(void *block, std::size_t size) { PoolHeap::fast_free(block, size, 0x8C76F20); }
};

// By pointers that the compiler cannot look through: it would drop pairs of malloc and free.
struct System {
    static inline Alloc volatile s_alloc = std::malloc;
    static inline Free volatile s_free = std::free;
    static void *alloc(std::size_t size) { return s_alloc(size); }
    static void free(void *block, std::size_t) { s_free(block); }
};

struct TcMalloc {
    static inline Alloc const s_alloc = symbolOf<Alloc>("libtcmalloc_minimal.so.4", "tc_malloc");
    static inline SizedFree const s_free = symbolOf<SizedFree>("libtcmalloc_minimal.so.4", "tc_free_sized");
    static void *alloc(std::size_t size) { return s_alloc(size); }
    static void free(void *block, std::size_t size) { s_free(block, size); }
};

struct Mimalloc {
    static inline Alloc const s_alloc = symbolOf<Alloc>("libmimalloc.so.2", "mi_malloc");
    static inline Free const s_free = symbolOf<Free>("libmimalloc.so.2", "mi_free");
    static void *alloc(std::size_t size) { return s_alloc(size); }
    static void free(void *block, std::size_t) { s_free(block); }
};

// The least that a heap can do: one list for each size class, no counts, no limits. A bound, not a peer.
struct Bare {
    struct Link {
        Link *next;
    };
    static inline constinit thread_local Link *s_lists[9] = {};

    [[gnu::noinline]] static void *alloc(std::size_t size)
    {
        Link *&list = s_lists[(size + 15) / 16];
        Link *block = list;
        if (!block) [[unlikely]]
            return std::malloc((size + 15) / 16 * 16);
        list = block->next;
        return block;
    }

    [[gnu::noinline]] static void free(void *block, std::size_t size)
    {
        Link *&list = s_lists[(size + 15) / 16];
        auto *link = static_cast<Link *>(block);
        link->next = list;
        list = link;
    }
};

struct Step {
    std::uint16_t slot;
    std::uint16_t size;
};

std::vector<Step> stepsOf(int seed)
{
    std::mt19937 random(static_cast<unsigned>(seed));
    std::vector<Step> steps(kSteps);
    for (Step &step : steps) {
        step.slot = static_cast<std::uint16_t>(random() % kLive);
        step.size = static_cast<std::uint16_t>(16 + random() % 113);
    }
    return steps;
}

// The blocks that are out. Small enough for the first cache, so that what is measured is the heap.
struct Live {
    std::array<void *, kLive> blocks;
    std::array<std::uint16_t, kLive> sizes;

    template <typename Heap>
    void take(std::size_t slot, std::uint16_t size)
    {
        blocks[slot] = Heap::alloc(size);
        sizes[slot] = size;
    }

    void write(std::size_t slot) const { *static_cast<std::uint64_t volatile *>(blocks[slot]) = slot; }

    template <typename Heap>
    void drop(std::size_t slot)
    {
        Heap::free(blocks[slot], sizes[slot]);
    }
};

// 4 096 blocks are out; each step frees a random one and takes another of a random size.
template <typename Heap, bool writes>
void replace(benchmark::State &state)
{
    std::vector<Step> const steps = stepsOf(state.thread_index());
    auto const live = std::make_unique<Live>();
    for (std::size_t i = 0; i < kLive; ++i)
        live->take<Heap>(i, steps[i].size);
    for (auto _ : state) {
        for (Step const step : steps) {
            live->drop<Heap>(step.slot);
            live->take<Heap>(step.slot, step.size);
            if constexpr (writes)
                live->write(step.slot);
        }
    }
    for (std::size_t i = 0; i < kLive; ++i)
        live->drop<Heap>(i);
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kSteps));
}

// The heap alone.
template <typename Heap>
void BM_FastAlloc_replace(benchmark::State &state)
{
    replace<Heap, false>(state);
}

// As a caller meets it: a heap that leaves a block's memory cold pays here.
template <typename Heap>
void BM_FastAlloc_replaceAndWrite(benchmark::State &state)
{
    replace<Heap, true>(state);
}

// 4 096 blocks are taken and written to, and then freed in the same order, as a frame or a parse does.
template <typename Heap>
void BM_FastAlloc_fillAndDrain(benchmark::State &state)
{
    std::vector<Step> const steps = stepsOf(state.thread_index());
    auto const live = std::make_unique<Live>();
    for (auto _ : state) {
        for (std::size_t i = 0; i < kLive; ++i) {
            live->take<Heap>(i, steps[i].size);
            live->write(i);
        }
        for (std::size_t i = 0; i < kLive; ++i)
            live->drop<Heap>(i);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kLive));
}

// One thread takes and writes blocks, the other frees them, over a ring of 4 096.
template <typename Heap>
void BM_FastAlloc_handOver(benchmark::State &state)
{
    static std::array<std::atomic<void *>, kLive> ring;
    std::vector<Step> const steps = stepsOf(0);
    std::size_t at = 0;
    for (auto _ : state) {
        for (Step const step : steps) {
            std::atomic<void *> &slot = ring[at++ % kLive];
            if (state.thread_index() == 0) {
                void *block = Heap::alloc(step.size);
                *static_cast<std::uint64_t volatile *>(block) = at;
                while (slot.load(std::memory_order_acquire))
                    std::this_thread::yield();
                slot.store(block, std::memory_order_release);
            } else {
                void *block = nullptr;
                while (!(block = slot.load(std::memory_order_acquire)))
                    std::this_thread::yield();
                slot.store(nullptr, std::memory_order_release);
                Heap::free(block, step.size);
            }
        }
    }
    if (state.thread_index() == 0)
        state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kSteps));
}

} // namespace

#define QEL_HEAP(heap)                                                                                       \
    BENCHMARK_TEMPLATE(BM_FastAlloc_replace, heap)->Threads(1)->Threads(2)->UseRealTime();                   \
    BENCHMARK_TEMPLATE(BM_FastAlloc_replaceAndWrite, heap)->Threads(1)->Threads(2)->UseRealTime();           \
    BENCHMARK_TEMPLATE(BM_FastAlloc_fillAndDrain, heap)->Threads(1)->Threads(2)->UseRealTime()

QEL_HEAP(Pool);
QEL_HEAP(TcMalloc);
QEL_HEAP(Mimalloc);
QEL_HEAP(System);
QEL_HEAP(Bare);

BENCHMARK_TEMPLATE(BM_FastAlloc_handOver, Pool)->Threads(2)->UseRealTime();
BENCHMARK_TEMPLATE(BM_FastAlloc_handOver, TcMalloc)->Threads(2)->UseRealTime();
BENCHMARK_TEMPLATE(BM_FastAlloc_handOver, Mimalloc)->Threads(2)->UseRealTime();
BENCHMARK_TEMPLATE(BM_FastAlloc_handOver, System)->Threads(2)->UseRealTime();
