#include "Support/PoolHeap/internPool.h"

#include "Support/PoolHeap/poolHeap.h"

#include <algorithm>
#include <cstring>
#include <new>

struct InternPool::Chunk {
    Chunk *next;
    std::size_t bytes; // with this head

    char *text() { return reinterpret_cast<char *>(this + 1); }
};

InternPool::InternPool(unsigned expectedBytes, unsigned chunkBytes, unsigned memoryContext)
    : m_expectedBytes(expectedBytes), m_chunkBytes(chunkBytes > 0 ? chunkBytes : 4096),
      m_memoryContext(memoryContext)
{
}

char const *InternPool::str_add(char const *text)
{
    std::size_t const length = text ? std::strlen(text) : 0;
    if (length == 0) {
        return "";
    }
    char *copy = room(length + 1);
    return copy ? static_cast<char const *>(std::memcpy(copy, text, length + 1)) : nullptr;
}

char *InternPool::room(std::size_t bytes)
{
    if (bytes > m_left) {
        std::size_t const chunkRoom = std::max(m_chunkBytes, m_chunks ? 0 : m_expectedBytes);
        std::size_t const whole = sizeof(Chunk) + std::max(bytes, chunkRoom);
        void *memory = PoolHeap::fast_alloc(whole, m_memoryContext);
        if (!memory) {
            return nullptr;
        }
        auto *chunk = new (memory) Chunk{nullptr, whole};
        if (bytes > chunkRoom && m_chunks) {
            // The chunk before it still has room for shorter texts.
            chunk->next = m_chunks->next;
            m_chunks->next = chunk;
            return chunk->text();
        }
        chunk->next = m_chunks;
        m_chunks = chunk;
        m_free = chunk->text();
        m_left = whole - sizeof(Chunk);
    }
    char *copy = m_free;
    m_free += bytes;
    m_left -= bytes;
    return copy;
}

void InternPool::clear()
{
    while (Chunk *chunk = m_chunks) {
        m_chunks = chunk->next;
        PoolHeap::fast_free(chunk, chunk->bytes, m_memoryContext);
    }
    m_free = nullptr;
    m_left = 0;
}
