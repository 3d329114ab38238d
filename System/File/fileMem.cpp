#include "System/File/fileMem.h"

#include "Support/OS/file.h"
#include "Support/PoolHeap/poolHeap.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <functional>
#include <limits>

namespace Qel {

namespace {

constexpr std::uint64_t largestSize = std::numeric_limits<std::uint32_t>::max();

} // namespace

cFileMem::cFileMem(unsigned int size, unsigned char const *data)
{
    cFileMem::set(size, data);
}

cFileMem::cFileMem(cFileMem const &other) : cFile(other)
{
    cFileMem::set(other.m_size, other.m_data);
}

cFileMem &cFileMem::operator=(cFileMem const &other)
{
    if (this != &other) {
        set(other.m_size, other.m_data);
    }
    return *this;
}

cFileMem::~cFileMem()
{
    if (m_ownership == OWNERSHIP_HEAP) {
        poolheap_free(m_data);
    }
}

unsigned int cFileMem::readAny(void *buffer, unsigned int size)
{
    if (m_position >= m_size || buffer == nullptr) {
        return 0;
    }
    std::uint32_t const count = std::min(size, m_size - m_position);
    std::memmove(buffer, m_data + m_position, count);
    m_position += count;
    return count;
}

unsigned int cFileMem::writeAny(void const *buffer, unsigned int size)
{
    if (m_ownership == OWNERSHIP_SHARED || (buffer == nullptr && size != 0)) {
        return 0;
    }
    std::uint64_t const end = std::uint64_t{m_position} + size;
    auto const *from = static_cast<unsigned char const *>(buffer);
    if (end > m_capacity) {
        // Bytes of this stream itself move with its block.
        bool const own = !std::less<>()(from, m_data) && std::less<>()(from, m_data + m_capacity);
        std::ptrdiff_t const offset = own ? from - m_data : 0;
        if (!reserveWide(end)) {
            return 0;
        }
        from = own ? m_data + offset : from;
    }
    if (size > 0) {
        std::memmove(m_data + m_position, from, size);
    }
    m_position = static_cast<std::uint32_t>(end);
    m_size = std::max(m_size, m_position);
    return size;
}

unsigned int cFileMem::seek(unsigned int position)
{
    m_position = std::min(position, m_size);
    return m_position;
}

bool cFileMem::reserveWide(std::uint64_t wanted)
{
    return wanted <= largestSize && reserve(static_cast<unsigned int>(wanted));
}

bool cFileMem::reserve(unsigned int size)
{
    if (size <= m_capacity) {
        return true;
    }
    if (m_ownership == OWNERSHIP_SHARED) {
        return false;
    }
    auto const fresh = static_cast<std::uint32_t>(
        std::min(largestSize, std::max<std::uint64_t>(2 * std::uint64_t{m_capacity}, size)));
    auto *const block = static_cast<unsigned char *>(poolheap_malloc(fresh));
    if (block == nullptr) {
        return false;
    }
    if (extent() > 0) {
        std::memcpy(block, m_data, extent());
    }
    if (m_ownership == OWNERSHIP_HEAP) {
        poolheap_free(m_data);
    }
    m_data = block;
    m_capacity = fresh;
    m_ownership = OWNERSHIP_HEAP;
    return true;
}

bool cFileMem::close()
{
    if (m_ownership == OWNERSHIP_HEAP) {
        poolheap_free(m_data);
    }
    m_data = nullptr;
    m_size = 0;
    m_position = 0;
    m_capacity = 0;
    m_ownership = OWNERSHIP_HEAP;
    return true;
}

unsigned int cFileMem::read(cFileMem &destination, unsigned int size)
{
    if (m_position >= m_size || destination.m_ownership == OWNERSHIP_SHARED) {
        return 0;
    }
    std::uint32_t const at = m_position; // the destination may be this stream
    std::uint32_t const count = std::min(size, m_size - at);
    if (count == 0 || !destination.makeRoom(std::uint64_t{destination.m_size} + count)) {
        return 0;
    }
    destination.seek(destination.m_size);
    unsigned int const taken = destination.write(m_data + at, count);
    m_position = at + taken;
    return taken;
}

unsigned int cFileMem::write(cFileMem &source)
{
    return write(source.getData(), source.size());
}

bool cFileMem::open(char const *path)
{
    close();
    os::FilePtr const file = os::openFile(path, "rb");
    std::uint64_t length = 0;
    if (!file || !os::plainFileSize(file.get(), length) || !makeRoom(length)) {
        return false;
    }
    m_size = static_cast<std::uint32_t>(length);
    std::size_t const got = length == 0 ? 0 : std::fread(m_data, 1, m_size, file.get());
    if (got < length) {
        std::memset(m_data + got, 0, static_cast<std::size_t>(length) - got);
    }
    return got == length;
}

bool cFileMem::set(unsigned int size, unsigned char const *data)
{
    // The old block stays until the copy is made: it may be the source, and it comes back on failure.
    struct {
        unsigned char *data;
        eOwnership ownership;
        std::uint32_t size;
        std::uint32_t position;
        std::uint32_t capacity;
    } const old{m_data, m_ownership, m_size, m_position, m_capacity};
    m_data = nullptr;
    m_ownership = OWNERSHIP_HEAP;
    close();
    if (!makeRoom(size)) {
        m_data = old.data;
        m_ownership = old.ownership;
        m_size = old.size;
        m_position = old.position;
        m_capacity = old.capacity;
        return false;
    }
    m_size = size;
    if (data != nullptr && size > 0) {
        std::memmove(m_data, data, size);
    }
    if (old.ownership == OWNERSHIP_HEAP) {
        poolheap_free(old.data);
    }
    return true;
}

bool cFileMem::openShared(unsigned int size, unsigned char *data)
{
    close();
    if (data == nullptr) {
        return false;
    }
    m_data = data;
    m_size = size;
    m_capacity = size;
    m_ownership = OWNERSHIP_SHARED;
    return true;
}

bool cFileMem::resize(unsigned int size)
{
    if (!makeRoom(size)) {
        return false;
    }
    m_size = size;
    return true;
}

bool cFileMem::writeZeros(unsigned int count)
{
    if (count == 0) {
        return true;
    }
    if (m_ownership == OWNERSHIP_SHARED || !makeRoom(std::uint64_t{m_position} + count)) {
        return false;
    }
    static constexpr unsigned char zeros[256] = {};
    while (count > 0) {
        auto const chunk = static_cast<unsigned int>(std::min<std::size_t>(count, sizeof(zeros)));
        if (write(zeros, chunk) != chunk) {
            return false;
        }
        count -= chunk;
    }
    return true;
}

void cFileMem::clear()
{
    m_size = 0;
    m_position = 0;
}

void cFileMem::swap(cFileMem &other)
{
    m_position = 0;
    other.m_position = 0;
    if (m_ownership == OWNERSHIP_HEAP && other.m_ownership == OWNERSHIP_HEAP) {
        std::swap(m_data, other.m_data);
        std::swap(m_size, other.m_size);
        std::swap(m_capacity, other.m_capacity);
        return;
    }
    cFileMem kept;
    if (kept.set(m_size, m_data) && set(other.m_size, other.m_data) && !other.set(kept.m_size, kept.m_data)) {
        set(kept.m_size, kept.m_data);
    }
}

} // namespace Qel
