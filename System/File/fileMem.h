#pragma once

#include "System/File/file.h"

#include <cstdint>
#include <cstring>

namespace Qel {

/// A stream over memory that grows as it is written.
///
/// It owns its block and never makes it smaller, or looks at a block of somebody else's that it only reads
/// (openShared()). Reads and writes share one position.
///
/// @code
/// cFileMem file;
/// if (file.open("media/level.dat")) {
///     std::uint32_t count = 0;
///     file >> count;
/// }
/// @endcode
///
/// @par Limits  4 GiB less one byte. A write or a reserve() that would pass it, or that gets no memory, gives
/// 0 or
///              false and changes nothing.
class QEL_API cFileMem : public cFile {
public:
    cFileMem() = default;

    /// As set(); without memory the stream is empty.
    cFileMem(unsigned int size, unsigned char const *data);

    cFileMem(cFileMem const &other);            ///< the contents in a block of its own, at position 0
    cFileMem &operator=(cFileMem const &other); ///< the contents in a block of its own, at position 0
    ~cFileMem() override;

    unsigned int read(void *buffer, unsigned int size) override
    {
        std::uint64_t const end = std::uint64_t{m_position} + size;
        if (end > m_size || buffer == nullptr || !moveValue(buffer, m_data + m_position, size)) {
            return readAny(buffer, size);
        }
        m_position = static_cast<std::uint32_t>(end);
        return size;
    }

    /// @return @p size, or 0 if there is no room
    unsigned int write(void const *buffer, unsigned int size) override
    {
        std::uint64_t const end = std::uint64_t{m_position} + size;
        bool const simple = end <= m_capacity && m_ownership != OWNERSHIP_SHARED;
        if (!simple || buffer == nullptr || !moveValue(m_data + m_position, buffer, size)) {
            return writeAny(buffer, size);
        }
        m_position = static_cast<std::uint32_t>(end);
        m_size = m_position > m_size ? m_position : m_size;
        return size;
    }

    unsigned int seek(unsigned int position) override; ///< at most to the end. @return the new position
    unsigned int size() const override { return m_size; }
    unsigned int tell() const override { return m_position; }
    bool reserve(unsigned int size) override;
    eFileClass getType() const override { return FILECLASS_MEM; }

    virtual bool close(); ///< Gives the block up; the stream is empty. @return true

    /// Appends what this stream reads to the end of another one, wherever that one stands. It is left at its
    /// end.
    /// @return bytes moved; 0, with both as they were, if @p destination cannot take them
    virtual unsigned int read(cFileMem &destination, unsigned int size);

    /// Writes another stream's whole contents here, wherever that one stands.
    virtual unsigned int write(cFileMem &source);

    virtual unsigned char const *getData() const
    {
        return m_data;
    }                                                   ///< size() bytes, or null; good until a change
    virtual unsigned char *getData() { return m_data; } ///< size() bytes, or null; good until a change

    /// Takes in a plain file of less than 4 GiB. A folder, a pipe or a device gives false.
    /// @return false if it cannot be opened or held: the stream is then empty. Also if less could be read
    /// than
    ///         the file is long: the rest is then zeros
    bool open(char const *path);

    /// Copies @p size bytes in. With a null @p data only the size is set, and the bytes may be anything.
    /// @return false if there is no memory; the stream is then as it was
    bool set(unsigned int size, unsigned char const *data);
    bool open(unsigned int size, unsigned char const *data) { return set(size, data); } ///< set()

    /// Looks at a block of the caller's, which must live until the next close() or open. Reads work, and
    /// writes give 0.
    /// @return false if @p data is null, and the stream is then empty
    bool openShared(unsigned int size, unsigned char *data);
    bool isShared() const { return m_ownership == OWNERSHIP_SHARED; } ///< a block of openShared()?

    /// Sets the size. The position stays, and new bytes may be anything. A write at a position behind the new
    /// end brings back what was there before.
    /// @return false if there is no room; the size is then as it was
    bool resize(unsigned int size);

    bool writeZeros(unsigned int count); ///< Writes zeros: all of them, or false
    void clear();                        ///< Empties the stream and keeps the block

    /// Exchanges contents. Both stand at position 0 after it, and own what they hold.
    void swap(cFileMem &other);

protected:
    /// Whose block the contents lie in.
    enum eOwnership : std::uint32_t {
        OWNERSHIP_SHARED = 0, ///< the caller's: read only
        OWNERSHIP_INLINE = 1, ///< an array of the object itself
        OWNERSHIP_HEAP = 2    ///< a block of poolheap_malloc(), or none
    };

    /// Room for @p wanted bytes. As reserve(), also beyond what 32 bits hold.
    bool makeRoom(std::uint64_t wanted) { return wanted <= m_capacity || reserveWide(wanted); }

    /// Bytes that a block takes along: also those behind the end that a write would bring back.
    std::uint32_t extent() const { return m_size > m_position ? m_size : m_position; }

    unsigned char *m_data = nullptr;
    eOwnership m_ownership = OWNERSHIP_HEAP;
    std::uint32_t m_size = 0;     // bytes of valid content
    std::uint32_t m_position = 0; // of the next read or write; beyond m_size only after resize()
    std::uint32_t m_capacity = 0; // bytes at m_data

private:
    // Through a local, so that the two places may overlap.
    template <typename T>
    static bool moveOne(void *to, void const *from)
    {
        T value;
        std::memcpy(&value, from, sizeof(value));
        std::memcpy(to, &value, sizeof(value));
        return true;
    }

    // The widths of the typed operations: one load and one store, and no call.
    static bool moveValue(void *to, void const *from, std::uint32_t size)
    {
        switch (size) {
        case 1:
            return moveOne<std::uint8_t>(to, from);
        case 2:
            return moveOne<std::uint16_t>(to, from);
        case 4:
            return moveOne<std::uint32_t>(to, from);
        case 8:
            return moveOne<std::uint64_t>(to, from);
        default:
            return false;
        }
    }

    unsigned int readAny(void *buffer, unsigned int size);
    unsigned int writeAny(void const *buffer, unsigned int size);
    bool reserveWide(std::uint64_t wanted);
};

} // namespace Qel
