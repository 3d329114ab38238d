#include "System/File/fileTempMem.h"

#include "Support/PoolHeap/poolHeap.h"

#include <cstring>

namespace Qel {

cFileTempMem::cFileTempMem()
{
    useInline();
}

cFileTempMem::cFileTempMem(unsigned int size, unsigned char const *data) : cFileMem(size, data)
{
}

// NOLINTNEXTLINE(bugprone-copy-constructor-init): the room inside is set up before the contents come.
cFileTempMem::cFileTempMem(cFileTempMem const &other) : cFileMem()
{
    useInline();
    cFileMem::operator=(other);
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): the base looks for it.
cFileTempMem &cFileTempMem::operator=(cFileTempMem const &other)
{
    cFileMem::operator=(other);
    return *this;
}

bool cFileTempMem::reserve(unsigned int size)
{
    if (size <= m_capacity || size > inlineSize) {
        return cFileMem::reserve(size);
    }
    if (m_ownership == OWNERSHIP_SHARED) {
        return false;
    }
    // More than the capacity and no more than the object's own room: the contents are on the heap.
    unsigned char *const old = m_data;
    if (extent() > 0) {
        std::memcpy(m_inline, old, extent());
    }
    poolheap_free(old);
    useInline();
    return true;
}

bool cFileTempMem::close()
{
    cFileMem::close();
    useInline();
    return true;
}

void cFileTempMem::useInline()
{
    m_data = m_inline;
    m_ownership = OWNERSHIP_INLINE;
    m_capacity = inlineSize;
}

} // namespace Qel
