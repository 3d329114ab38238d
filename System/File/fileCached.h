#pragma once

#include "System/File/file.h"

#include <cstdint>
#include <memory>

namespace Qel {

class cFileCached;

/// One asynchronous read of a cFileCached that is under way.
struct sAsyncRequest {
    bool inUse;
    std::uint32_t delivered; ///< bytes already served from the window
    void *user;
    cFile::AsyncCallback callback;
    cFileCached *owner;
    std::uint32_t wanted; ///< bytes asked of the inner stream
    std::uint32_t serial; ///< tells this request from earlier ones in the same place
};

/// A window of read-ahead and write-back over another stream. A base: whoever derives from it supplies
/// getType().
///
/// Reads fill the window, writes collect in it. Written bytes reach the inner stream when the window is full
/// or moves, on flush(), and on destruction; a window that was only read is never written back. Reads and
/// writes may alternate at will. The inner stream is moved about and is not to be used beside this one. It is
/// seeked only to where it does not stand already: reads and writes in a row never do so.
///
/// @par Ownership  Owns the inner stream, which was made with `new`, and destroys it. Cannot be copied.
/// @par Threads    One thread for all cached streams that use async_read(), completions included: the table
/// of
///                 requests is shared and has no lock.
class QEL_API cFileCached : public cFile {
public:
    static constexpr unsigned int maxRequests =
        4; ///< asynchronous reads under way, of all cached streams together

    /// @param inner       the stream beneath, which is taken over; with null nothing is ever delivered or
    /// taken
    /// @param bufferSize  bytes of the window; with 0, and without memory, everything goes to @p inner at
    /// once
    /// @param position    of the first read or write. @p inner is seeked there unless its tell() says so
    /// already
    cFileCached(cFile *inner, unsigned int bufferSize, unsigned int position);
    cFileCached(cFileCached const &) = delete;
    cFileCached &operator=(cFileCached const &) = delete;

    /// Writes back, destroys the inner stream, and then ends requests that it has left open: their callbacks
    /// are told what the window had served.
    ~cFileCached() override;

    unsigned int read(void *buffer, unsigned int size) override;

    /// @return bytes taken into the window; fewer than @p size when the inner stream took no more of what was
    ///         there before, or when it cannot be positioned
    unsigned int write(void const *buffer, unsigned int size) override;

    unsigned int seek(unsigned int position) override; ///< to any position. @return @p position
    unsigned int size() const override; ///< of the inner stream: what waits in the window is not counted
    unsigned int tell() const override { return m_position; }

    using cFile::async_read;

    /// Seeks to @p offset and reads as cFile::async_read() does, with what the window lacks asked of the
    /// inner stream's async_read(). When four such requests are under way, or the window has it all, the
    /// callback comes before the call returns.
    /// @param buffer    room for @p size bytes, which must live until the callback
    /// @param callback  called once, with at most @p size; it may start requests and may destroy the stream
    /// @return false if the inner stream refused; the callback is then not called
    ///
    /// The inner stream completes each request once. A completion too many does nothing while the place of
    /// its request in the table is free; once that is another request's, it would end that one.
    virtual bool async_read(void *buffer, unsigned int offset, unsigned int size, AsyncCallback callback,
                            void *user);

    /// Hands what was written to the inner stream.
    /// @return false if it did not take all of it, which is then kept for another attempt
    bool flush();

private:
    struct BufferRelease {
        void operator()(unsigned char *buffer) const;
    };

    bool inWindow() const { return m_position >= m_windowStart && m_position < m_windowEnd; }
    bool placeInner(std::uint32_t position);
    void innerMoved(unsigned int done, unsigned int asked);
    bool moveWindow();
    unsigned int readInner(void *buffer, unsigned int size);
    unsigned int writeInner(void const *buffer, unsigned int size);
    static void completed(unsigned int bytes, void *request);

    static sAsyncRequest m_requests[maxRequests];
    static unsigned int m_pendingRequests;

    std::unique_ptr<cFile> m_inner;
    std::unique_ptr<unsigned char, BufferRelease> m_buffer;
    std::uint32_t m_bufferSize;      // bytes of the window
    std::uint32_t m_windowStart = 0; // stream position of the window's first byte
    std::uint32_t m_windowEnd = 0;   // stream position behind its last valid byte
    std::uint32_t m_position;        // of the next read or write
    std::uint32_t m_innerPosition;   // where the inner stream stands
    bool m_innerPlaced;              // m_innerPosition is known
    bool m_dirty = false;            // the window holds written bytes
};

} // namespace Qel
