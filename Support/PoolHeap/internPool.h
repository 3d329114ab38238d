#pragma once

#include "Support/export.h"

#include <cstddef>

/// A pool of text: copies stand one behind the other in large chunks and all go at once.
///
/// Equal texts are not merged. May serve as a base class; it has no virtual operation, so an object of a
/// derived class is not deleted through it.
///
/// @par Ownership  Owns its copies. Cannot be copied: the texts have given-out addresses.
/// @par Threads    One thread at a time.
class QEL_API InternPool {
public:
    /// Takes no memory yet.
    /// @param expectedBytes  texts to come, terminators included; the first chunk has at least this much
    ///                       room. 0 if not known
    /// @param chunkBytes     room of a chunk; 0 stands for 4096
    /// @param memoryContext  the context that the chunks are counted under, see PoolHeap::context_counts()
    InternPool(unsigned expectedBytes, unsigned chunkBytes, unsigned memoryContext);
    ~InternPool() { clear(); }

    InternPool(InternPool const &) = delete;
    InternPool &operator=(InternPool const &) = delete;

    /// Copies a text into the pool. One that is longer than a chunk gets a chunk to itself.
    /// @param text  null counts as empty
    /// @return the copy, valid until clear(); null if there is no memory. An empty text is valid for ever.
    char const *str_add(char const *text);

    /// Frees all texts. The pool can be filled again.
    void clear();

private:
    struct Chunk;

    char *room(std::size_t bytes);

    Chunk *m_chunks = nullptr; // the one that is being filled comes first
    char *m_free = nullptr;
    std::size_t m_left = 0; // bytes from m_free on
    unsigned m_expectedBytes;
    unsigned m_chunkBytes;
    unsigned m_memoryContext;
};
