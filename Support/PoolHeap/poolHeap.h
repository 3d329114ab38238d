#pragma once

#include "Support/export.h"

#include <cstddef>
#include <cstdint>

// A call without the stub of the linker between: the two fast operations are not much longer than that.
#if defined(__GNUC__) && !defined(__clang__)
#define QEL_POOLHEAP_DIRECT [[gnu::noplt]]
#else
#define QEL_POOLHEAP_DIRECT
#endif

/// The memory library: small blocks told their size on release, objects, plain buffers.
///
/// fast_alloc() serves blocks of up to 512 bytes from lists that every thread has of its own, one for each
/// 16 bytes of size; larger ones, std_alloc() and poolheap_malloc() come from the system's allocator. What
/// fast_alloc() gives out is counted by context. Blocks freed on another thread than the one that took them
/// come home in batches of 64, a thread keeps no more than 128 KiB of each size, and one that ends leaves its
/// lists and its counts to the others.
///
/// Every operation may be called on any thread, before init() and after shutdown() too: a host's own static
/// objects may hold texts for longer than the library lives. Builds with a sanitizer take every block from
/// the system's allocator, and count the same.
namespace PoolHeap {

/// Names a memory context. Ten 32-bit words of the given interface; the name has the machine's width.
struct ContextInfo {
    char const *name = nullptr; ///< kept, not copied: a literal
    std::uint32_t parent = 0;
    std::uint16_t options[2] = {1, 1};
    std::uint32_t limits[6] = {};
    std::uint32_t id = 0; ///< the context's identifier, as fast_alloc() takes it
};

/// Callbacks of the library, set once at load. Both may be null.
///
/// Debug builds check each fast_free(): one told another size or context than the block was taken with is
/// reported and done right; one of a block that is not out is reported, stops, and is not done. Release
/// builds check nothing and call nothing.
struct Config {
    void (*message)(char const *text) = nullptr; ///< takes diagnostics
    void (*breakpoint)() = nullptr;              ///< called when a block is freed that was never given out
};

/// What has been taken under one memory context.
///
/// All numbers are exact while no other thread allocates or frees. The peak is exact for a context that one
/// thread uses; each further thread lets it be off by up to 64 KiB, since threads compare notes that seldom.
struct ContextCounts {
    char const *name = nullptr;    ///< as context_init() was told, or null
    std::uint32_t id = 0;          ///< the context's identifier
    std::uint64_t allocations = 0; ///< blocks given out so far
    std::uint64_t liveBlocks = 0;  ///< blocks out now
    std::uint64_t liveBytes = 0;   ///< bytes out now, as asked for
    std::uint64_t peakBytes = 0;   ///< the most bytes that were out at once
};

extern QEL_API Config the_config;

QEL_API void init(); ///< marks the start of the library's life; nothing waits for it

/// Gives memory back to the system that holds no live block, as far as other threads keep none of it ready.
QEL_API void shutdown();

/// Names a context, so that its counts can be read by name. A second call for an id replaces the name.
QEL_API void context_init(ContextInfo info);

/// A block for an object, aligned for every type.
/// @param flags  not used; 0
/// @return null if there is no memory
QEL_API void *std_alloc(std::size_t size, std::uint32_t flags = 0);
QEL_API void std_free(void *block, std::uint32_t flags = 0); ///< null is allowed

/// A small block under a context, from free lists of the calling thread, aligned for every type.
/// @param context  any number; need not have been named
/// @param size     bytes; 0 gives a block, too
/// @return null if there is no memory
QEL_POOLHEAP_DIRECT QEL_API void *fast_alloc(std::size_t size, std::uint32_t context);

/// Gives a block of fast_alloc() back. Any thread may do so.
/// @param size, context  as they were on allocation; null as @p block is allowed
QEL_POOLHEAP_DIRECT QEL_API void fast_free(void *block, std::size_t size, std::uint32_t context);

/// Reads a context's counts.
/// @return false if nothing was ever taken under @p context and it was never named
QEL_API bool context_counts(std::uint32_t context, ContextCounts &counts);

/// Reads all contexts' counts in the order in which they were first seen.
/// @param room  entries that fit into @p counts
/// @return the number of contexts, which may be more than @p room
QEL_API std::size_t all_context_counts(ContextCounts *counts, std::size_t room);

} // namespace PoolHeap

#undef QEL_POOLHEAP_DIRECT

QEL_API void *poolheap_malloc(std::size_t size); ///< a plain buffer; null if there is no memory
QEL_API void poolheap_free(void *block);         ///< null is allowed
