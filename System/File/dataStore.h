#pragma once

#include "System/System/export.h"

#include <cstdint>

namespace Qel {

/// Names a block of a cDataStore: a checksum of its name, or any number of the user's.
struct sBlockId {
    std::uint32_t value;
};

/// Whose image a cDataStore has.
enum eMode : std::uint8_t {
    MODE_CLOSED = 0, ///< none
    MODE_OWNED = 1,  ///< the store's
    MODE_SHARED = 2  ///< somebody else's; it is never written
};

/// A dictionary from names to bytes in one flat image, which can be saved whole and used again without
/// parsing.
///
/// The image is a sequence of blocks: the ID and the data's length, 4 bytes each, zeros up to the next
/// multiple of the alignment counted from the image's start, the data. The next block follows at once. The
/// alignment is not in the image: reader and writer have to agree on it. Up to 7 bytes behind the last block
/// are tolerated.
///
/// @code
/// cDataStore store;
/// store.writeBlock("score", &score, sizeof(score));
/// file.write(store.getRawData(), store.getRawSize());
///
/// cDataStore view(image, imageSize); // looks at the bytes, copies nothing
/// void const *data = nullptr;
/// unsigned int size = 0;
/// if (view.getBlock("score", data, size)) {
/// }
/// @endcode
///
/// An image may be any bytes: a block that would leave it is not found, and ends every search.
///
/// @par Limits   4 GiB less one byte. A write that passes it, or gets no memory, changes nothing.
/// @par Cost     A search walks the headers, and a write that appends copies the image.
/// @par Threads  Any number of threads may read a store that nobody writes.
class QEL_API cDataStore {
public:
    using eMode = Qel::eMode;
    using enum Qel::eMode;

    cDataStore() = default;                          ///< closed, with alignment 4
    cDataStore(void const *data, unsigned int size); ///< open_shared() with alignment 4
    cDataStore(cDataStore const &other);             ///< see operator=()

    /// Copies the blocks, and the alignment, into an image of its own. A block with the ID 0 is left out, and
    /// so is whatever does not lie whole in @p other's image. Without memory nothing changes.
    cDataStore &operator=(cDataStore const &other);
    ~cDataStore();

    /// Closes, and starts an empty image of its own.
    /// @param writeAlignment  of the data, in bytes: a power of two; anything else counts as 4
    void open(unsigned char writeAlignment);

    /// Closes, and looks at an image that must live as long as this store does. A write makes a copy first.
    /// The alignment stays as it is: for an image written with another one, open() with that before.
    void open_shared(void const *data, unsigned int size);
    void open_shared(cDataStore const &other); ///< the same with @p other's image

    void close(); ///< Gives the image up. The alignment stays

    /// Writes a block. One of that ID and length is overwritten where it is; otherwise an old one goes, and
    /// the new one comes to the end.
    /// @param data  @p size bytes, which may lie in this store's image
    /// @param size  0 removes the block
    void writeBlock(sBlockId id, void const *data, unsigned int size);
    void writeBlock(char const *name, void const *data, unsigned int size);

    /// Finds the first block of an ID.
    /// @param data  set to the bytes in the image, good until the store changes; null if there are none
    /// @param size  set to their number; 0 if there are none
    /// @return false if there is no such block. While closed @p data and @p size then stay as they are
    bool getBlock(sBlockId id, void const *&data, unsigned int &size) const;
    bool getBlock(char const *name, void const *&data, unsigned int &size) const;

    /// Writes a block of @p source here.
    /// @return false if @p source has none of that ID; nothing changes then
    bool copyBlock(sBlockId id, cDataStore const &source);
    bool copyBlock(char const *name, cDataStore const &source);

    /// CRC-32 of the name's bytes, from 0xFFFFFFFF and not inverted at the end. Case matters; null is the
    /// empty name.
    static sBlockId calcBlockId(char const *name);

    void swap(cDataStore &other);

    /// Cuts a damaged image before the first block that does not lie in it whole, and logs that. No byte is
    /// written, so that it works on a shared image as well.
    /// @return true if there was nothing to cut
    bool fixErrors();

    void const *getRawData() const { return m_data; }                   ///< the image, or null
    unsigned int getRawSize() const { return m_size; }                  ///< its length in bytes
    unsigned int getWriteAlignment() const { return m_writeAlignment; } ///< in bytes
    eMode getMode() const { return m_mode; }

private:
    struct sFindBlock;

    std::uint64_t alignedLen(std::uint64_t length) const;
    bool readBlock(sFindBlock &out, std::uint64_t at) const;
    bool findBlock(sFindBlock &out, std::uint32_t id) const;
    std::uint64_t endOfBlocks() const;
    void putBlock(unsigned char *image, std::uint64_t at, sFindBlock const &block, void const *data) const;
    void adopt(unsigned char *image, std::uint64_t size);
    bool dynCpy(cDataStore const &source, std::uint32_t skipId);

    unsigned char *m_data = nullptr; // not written through in MODE_SHARED
    std::uint32_t m_size = 0;
    std::uint8_t m_writeAlignment = 4;
    eMode m_mode = MODE_CLOSED;
};

} // namespace Qel
