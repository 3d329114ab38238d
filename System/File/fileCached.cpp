#include "System/File/fileCached.h"

#include "Support/PoolHeap/poolHeap.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace Qel {

namespace {

constexpr std::uint32_t largestPosition = std::numeric_limits<std::uint32_t>::max();

unsigned int cutToStream(std::uint32_t position, unsigned int size)
{
    return std::min(size, largestPosition - position);
}

} // namespace

sAsyncRequest cFileCached::m_requests[maxRequests];
unsigned int cFileCached::m_pendingRequests = 0;

void cFileCached::BufferRelease::operator()(unsigned char *buffer) const
{
    PoolHeap::std_free(buffer);
}

cFileCached::cFileCached(cFile *inner, unsigned int bufferSize, unsigned int position)
    : m_inner(inner),
      m_buffer(bufferSize == 0 ? nullptr : static_cast<unsigned char *>(PoolHeap::std_alloc(bufferSize))),
      m_bufferSize(m_buffer ? bufferSize : 0), m_windowStart(position), m_windowEnd(position),
      m_position(position), m_innerPosition(position),
      m_innerPlaced(inner != nullptr && inner->tell() == position)
{
}

cFileCached::~cFileCached()
{
    flush();
    m_inner.reset();
    for (sAsyncRequest &request : m_requests) {
        if (request.inUse && request.owner == this) {
            completed(0, &request);
        }
    }
}

// A stream that has no place at the position, such as memory behind its end, would take or give other bytes.
bool cFileCached::placeInner(std::uint32_t position)
{
    if (!m_innerPlaced || m_innerPosition != position) {
        m_inner->seek(position);
        m_innerPosition = position;
        m_innerPlaced = m_inner->tell() == position;
    }
    return m_innerPlaced;
}

// Streams differ in where a transfer leaves them that did not go as asked.
void cFileCached::innerMoved(unsigned int done, unsigned int asked)
{
    m_innerPosition += done;
    m_innerPlaced = m_innerPlaced && done <= asked;
}

bool cFileCached::flush()
{
    if (!m_dirty) {
        return true;
    }
    std::uint32_t const held = m_windowEnd - m_windowStart;
    if (!placeInner(m_windowStart) || writeInner(m_buffer.get(), held) != held) {
        return false;
    }
    m_dirty = false;
    return true;
}

bool cFileCached::moveWindow()
{
    if (!flush()) {
        return false;
    }
    m_windowStart = m_position;
    m_windowEnd = m_position;
    return placeInner(m_position);
}

unsigned int cFileCached::readInner(void *buffer, unsigned int size)
{
    unsigned int const asked = cutToStream(m_position, size);
    unsigned int const done = m_inner->read(buffer, asked);
    innerMoved(done, asked);
    return std::min(asked, done);
}

unsigned int cFileCached::writeInner(void const *buffer, unsigned int size)
{
    unsigned int const done = m_inner->write(buffer, size);
    m_innerPosition += done;
    m_innerPlaced = m_innerPlaced && done == size;
    return done;
}

unsigned int cFileCached::read(void *buffer, unsigned int size)
{
    if (!m_inner || buffer == nullptr) {
        return 0;
    }
    auto *const to = static_cast<unsigned char *>(buffer);
    unsigned int done = 0;
    while (done < size) {
        if (inWindow()) {
            unsigned int const count = std::min(size - done, m_windowEnd - m_position);
            std::memcpy(to + done, m_buffer.get() + (m_position - m_windowStart), count);
            m_position += count;
            done += count;
            continue;
        }
        if (!moveWindow()) {
            break;
        }
        if (m_bufferSize == 0) {
            unsigned int const count = readInner(to + done, size - done);
            m_position += count;
            return done + count;
        }
        m_windowEnd = m_position + readInner(m_buffer.get(), m_bufferSize);
        if (m_windowEnd == m_position) {
            break;
        }
    }
    return done;
}

unsigned int cFileCached::write(void const *buffer, unsigned int size)
{
    if (!m_inner || buffer == nullptr) {
        return 0;
    }
    size = cutToStream(m_position, size);
    auto const *const from = static_cast<unsigned char const *>(buffer);
    unsigned int done = 0;
    while (done < size) {
        std::uint32_t const before = m_position - m_windowStart; // bytes of the window, if it is in there
        bool const joins =
            m_windowStart < m_windowEnd && m_position >= m_windowStart && m_position <= m_windowEnd;
        if (!joins || before >= m_bufferSize) {
            if (!moveWindow()) {
                break;
            }
            if (m_bufferSize == 0) {
                unsigned int const count = std::min(size, writeInner(from, size));
                m_position += count;
                return count;
            }
        }
        std::uint32_t const at = m_position - m_windowStart;
        unsigned int const count = std::min(size - done, m_bufferSize - at);
        std::memcpy(m_buffer.get() + at, from + done, count);
        m_dirty = true;
        m_position += count;
        done += count;
        if (m_position > m_windowEnd) {
            m_windowEnd = m_position;
            // A window that has filled up goes out at once. If it cannot, the next write that needs room
            // tells.
            if (m_windowEnd - m_windowStart == m_bufferSize) {
                flush();
            }
        }
    }
    return done;
}

unsigned int cFileCached::seek(unsigned int position)
{
    m_position = position;
    return position;
}

unsigned int cFileCached::size() const
{
    return m_inner ? m_inner->size() : 0;
}

bool cFileCached::async_read(void *buffer, unsigned int offset, unsigned int size, AsyncCallback callback,
                             void *user)
{
    seek(offset);
    unsigned int const available = inWindow() ? std::min(size, m_windowEnd - m_position) : 0;
    bool const windowHasAll = available == size;
    // Bytes that wait in the window have to be in the inner stream before it is asked.
    if (windowHasAll || m_pendingRequests == maxRequests || !m_inner || buffer == nullptr || !flush()) {
        unsigned int const bytes = read(buffer, size);
        if (callback != nullptr) {
            callback(bytes, user);
        }
        return true;
    }

    unsigned int const served = read(buffer, available);
    unsigned int const wanted = cutToStream(m_position, size - served);
    placeInner(m_position);
    m_innerPlaced = false; // until then it is on its way
    sAsyncRequest &request = *std::find_if(std::begin(m_requests), std::end(m_requests),
                                           [](sAsyncRequest const &r) { return !r.inUse; });
    std::uint32_t const serial = request.serial + 1;
    request = {true, served, user, callback, this, wanted, serial};
    ++m_pendingRequests;
    // The callback may destroy this stream.
    if (m_inner->async_read(static_cast<unsigned char *>(buffer) + served, wanted, &completed, &request)) {
        return true;
    }
    if (request.inUse && request.serial == serial) {
        request.inUse = false;
        --m_pendingRequests;
    }
    return false;
}

void cFileCached::completed(unsigned int bytes, void *user)
{
    auto &request = *static_cast<sAsyncRequest *>(user);
    if (!request.inUse) {
        return;
    }
    bytes = std::min(bytes, request.wanted);
    unsigned int const total = request.delivered + bytes;
    AsyncCallback const callback = request.callback;
    void *const callbackUser = request.user;
    request.owner->m_position += bytes;
    request.inUse = false;
    --m_pendingRequests;
    if (callback != nullptr) {
        callback(total, callbackUser);
    }
}

} // namespace Qel
