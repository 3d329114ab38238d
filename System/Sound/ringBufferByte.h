#pragma once

#include "System/System/export.h"

#include <atomic>

namespace Qel {

/// Ring of bytes between a sound decoder and a channel.
///
/// The decoder writes at one end and the channel reads at the other. Both indices run over twice the size, so
/// a full ring and an empty ring differ and every byte of the buffer is usable.
///
/// @code
/// RingBufferByte ring;
/// if (ring.init(16384)) {
///     ring.write(pcm, pcmBytes);
/// }
/// @endcode
///
/// @par Ownership  Owns its buffer. Cannot be copied.
/// @par Threads    One thread may write while another reads. init() and flush() need both to rest.
class QEL_API RingBufferByte {
public:
    RingBufferByte() = default;
    ~RingBufferByte();

    RingBufferByte(RingBufferByte const &) = delete;
    RingBufferByte &operator=(RingBufferByte const &) = delete;

    /// Allocates the buffer and empties the ring.
    /// @param size  capacity in bytes, a power of two up to 1 GiB
    /// @return false if @p size is none, or there is no memory; the ring is then unchanged
    bool init(int size);
    void close(); ///< frees the buffer; capacity 0

    /// Tells where bytes can be written in place; advanceWriteIndex() then hands them over.
    /// @param count  bytes wanted
    /// @param p1,n1  the first span
    /// @param p2,n2  the rest from the buffer's start; null and 0 if there is none
    /// @return bytes of both spans: fewer than wanted when the ring is too full
    int getWriteRegions(int count, void **p1, int *n1, void **p2, int *n2);

    /// Tells where bytes can be read in place; advanceReadIndex() then frees their room. As above.
    int getReadRegions(int count, void **p1, int *n1, void **p2, int *n2);

    int advanceWriteIndex(int bytes); ///< @return the new index, 0 .. 2 * size() - 1
    int advanceReadIndex(int bytes);  ///< @return the new index, 0 .. 2 * size() - 1

    /// Copies up to @p bytes bytes in. @return bytes taken, 0 when it is full
    int write(void const *data, int bytes);

    /// Copies out the oldest bytes and frees their room. @return bytes delivered, 0 when it is empty
    int read(void *data, int bytes);

    void flush(); ///< drops everything that has not been read

    int getReadAvailable() const;                                         ///< bytes to read
    int getWriteAvailable() const { return m_size - getReadAvailable(); } ///< bytes of room
    int size() const { return m_size; }                                   ///< capacity in bytes

private:
    int regions(int index, int wanted, int available, void **p1, int *n1, void **p2, int *n2);

    std::atomic<int> m_write{0}; // 0 .. 2 * m_size - 1
    std::atomic<int> m_read{0};  // 0 .. 2 * m_size - 1
    int m_size = 0;              // bytes
    int m_bigMask = 0;           // 2 * m_size - 1: wraps an index
    int m_smallMask = 0;         // m_size - 1: turns an index into a buffer position
    unsigned char *m_buffer = nullptr;
};

} // namespace Qel
