#include "System/File/dataStore.h"

#include "Support/PoolHeap/poolHeap.h"
#include "System/System/logManager.h"
#include "System/System/stringTools.h"

#include <bit>
#include <cstring>
#include <limits>
#include <new>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Qel {

namespace {

constexpr std::uint64_t headerSize = 8;
constexpr std::uint64_t largestImage = std::numeric_limits<std::uint32_t>::max();

unsigned char *newImage(std::uint64_t size)
{
    return static_cast<unsigned char *>(poolheap_malloc(static_cast<std::size_t>(size)));
}

} // namespace

struct cDataStore::sFindBlock {
    std::uint32_t id;
    std::uint32_t length;
    std::uint64_t offset; // of the data

    std::uint64_t end() const { return offset + length; }
};

cDataStore::cDataStore(void const *data, unsigned int size)
{
    open_shared(data, size);
}

cDataStore::cDataStore(cDataStore const &other)
{
    dynCpy(other, 0);
}

cDataStore &cDataStore::operator=(cDataStore const &other)
{
    if (this != &other) {
        dynCpy(other, 0);
    }
    return *this;
}

cDataStore::~cDataStore()
{
    close();
}

void cDataStore::open(unsigned char writeAlignment)
{
    close();
    m_writeAlignment = std::has_single_bit(writeAlignment) ? writeAlignment : std::uint8_t{4};
    m_mode = MODE_OWNED;
}

void cDataStore::open_shared(void const *data, unsigned int size)
{
    close();
    m_data = static_cast<unsigned char *>(const_cast<void *>(data));
    m_size = data == nullptr ? 0 : size;
    m_mode = MODE_SHARED;
}

void cDataStore::open_shared(cDataStore const &other)
{
    if (this != &other) {
        open_shared(other.m_data, other.m_size);
    }
}

void cDataStore::close()
{
    if (m_mode == MODE_OWNED) {
        poolheap_free(m_data);
    }
    m_data = nullptr;
    m_size = 0;
    m_mode = MODE_CLOSED;
}

std::uint64_t cDataStore::alignedLen(std::uint64_t length) const
{
    std::uint64_t const mask = m_writeAlignment - std::uint64_t{1};
    return (length + mask) & ~mask;
}

// Gives no block that does not lie in the image whole.
bool cDataStore::readBlock(sFindBlock &out, std::uint64_t at) const
{
    if (at + headerSize > m_size) {
        return false;
    }
    std::memcpy(&out.id, m_data + at, sizeof(out.id));
    std::memcpy(&out.length, m_data + at + sizeof(out.id), sizeof(out.length));
    out.offset = alignedLen(at + headerSize);
    return out.end() <= m_size;
}

bool cDataStore::findBlock(sFindBlock &out, std::uint32_t id) const
{
    for (std::uint64_t at = 0; readBlock(out, at); at = out.end()) {
        if (out.id == id) {
            return true;
        }
    }
    return false;
}

std::uint64_t cDataStore::endOfBlocks() const
{
    std::uint64_t at = 0;
    for (sFindBlock block; readBlock(block, at);) {
        at = block.end();
    }
    return at;
}

void cDataStore::putBlock(unsigned char *image, std::uint64_t at, sFindBlock const &block,
                          void const *data) const
{
    std::memcpy(image + at, &block.id, sizeof(block.id));
    std::memcpy(image + at + sizeof(block.id), &block.length, sizeof(block.length));
    std::memset(image + at + headerSize, 0, static_cast<std::size_t>(block.offset - at - headerSize));
    std::memcpy(image + block.offset, data, block.length);
}

void cDataStore::adopt(unsigned char *image, std::uint64_t size)
{
    close();
    m_data = image;
    m_size = static_cast<std::uint32_t>(size);
    m_mode = MODE_OWNED;
}

// The outcome is that of writing the source's blocks one after the other into an empty store, in linear time:
// of blocks with one ID the last counts, in the place of the first if the length is the same, and a length of
// 0 removes.
bool cDataStore::dynCpy(cDataStore const &source, std::uint32_t skipId)
{
    struct Kept {
        sFindBlock block;
        bool counts;
    };
    std::vector<Kept> kept;
    try {
        std::unordered_map<std::uint32_t, std::size_t> places;
        sFindBlock block;
        for (std::uint64_t at = 0; source.readBlock(block, at); at = block.end()) {
            if (block.id == skipId) {
                continue;
            }
            auto const earlier = places.find(block.id);
            if (earlier != places.end()) {
                Kept &before = kept[earlier->second];
                if (before.block.length == block.length) {
                    before.block = block;
                    continue;
                }
                before.counts = false;
                places.erase(earlier);
            }
            if (block.length > 0) {
                places[block.id] = kept.size();
                kept.push_back({block, true});
            }
        }
    } catch (std::bad_alloc const &) {
        return false;
    }

    std::uint64_t size = 0;
    for (Kept const &k : kept) {
        size = k.counts ? source.alignedLen(size + headerSize) + k.block.length : size;
    }
    unsigned char *const image = size == 0 || size > largestImage ? nullptr : newImage(size);
    if (size > 0 && image == nullptr) {
        return false;
    }
    std::uint64_t at = 0;
    for (Kept const &k : kept) {
        if (k.counts) {
            sFindBlock const moved{k.block.id, k.block.length, source.alignedLen(at + headerSize)};
            putBlock(image, at, moved, source.m_data + k.block.offset);
            at = moved.end();
        }
    }
    m_writeAlignment = source.m_writeAlignment;
    adopt(image, size);
    return true;
}

void cDataStore::writeBlock(sBlockId id, void const *data, unsigned int size)
{
    if (data == nullptr && size > 0) {
        return;
    }
    sFindBlock found;
    bool const exists = findBlock(found, id.value);
    if (exists && m_mode == MODE_OWNED && found.length == size) {
        if (size > 0) {
            std::memmove(m_data + found.offset, data, size);
        }
        return;
    }
    cDataStore without;
    if (exists && !without.dynCpy(*this, id.value)) {
        return;
    }
    cDataStore const &base = exists ? without : *this;
    if (size == 0) {
        if (exists) {
            swap(without);
        }
        return;
    }

    std::uint64_t const at = base.endOfBlocks();
    sFindBlock const added{id.value, size, base.alignedLen(at + headerSize)};
    unsigned char *const image = added.end() > largestImage ? nullptr : newImage(added.end());
    if (image == nullptr) {
        return;
    }
    if (at > 0) {
        std::memcpy(image, base.m_data, static_cast<std::size_t>(at));
    }
    // The data may lie in the old image, which goes after this.
    base.putBlock(image, at, added, data);
    adopt(image, added.end());
}

void cDataStore::writeBlock(char const *name, void const *data, unsigned int size)
{
    writeBlock(calcBlockId(name), data, size);
}

bool cDataStore::getBlock(sBlockId id, void const *&data, unsigned int &size) const
{
    if (m_mode == MODE_CLOSED) {
        return false;
    }
    sFindBlock found;
    bool const exists = findBlock(found, id.value);
    data = exists ? m_data + found.offset : nullptr;
    size = exists ? found.length : 0;
    return exists;
}

bool cDataStore::getBlock(char const *name, void const *&data, unsigned int &size) const
{
    return getBlock(calcBlockId(name), data, size);
}

bool cDataStore::copyBlock(sBlockId id, cDataStore const &source)
{
    void const *data = nullptr;
    unsigned int size = 0;
    if (!source.getBlock(id, data, size)) {
        return false;
    }
    writeBlock(id, data, size);
    return true;
}

bool cDataStore::copyBlock(char const *name, cDataStore const &source)
{
    return copyBlock(calcBlockId(name), source);
}

sBlockId cDataStore::calcBlockId(char const *name)
{
    return {StringTools::calcHash(name)};
}

void cDataStore::swap(cDataStore &other)
{
    std::swap(m_data, other.m_data);
    std::swap(m_size, other.m_size);
    std::swap(m_writeAlignment, other.m_writeAlignment);
    std::swap(m_mode, other.m_mode);
}

bool cDataStore::fixErrors()
{
    std::uint64_t const end = endOfBlocks();
    if (m_size - end < headerSize) {
        return true;
    }
    if (LogManager::checkDefLogLevel(3)) {
        LogManager::defLevelMessage("cDataStore::fixErrors failed\n");
    }
    m_size = static_cast<std::uint32_t>(end);
    return false;
}

} // namespace Qel
