#include "System/File/fileDisk.h"

#include "Support/OS/file.h"
#include "System/File/fileMem.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace Qel {

namespace {

constexpr std::uint32_t largestPosition = std::numeric_limits<std::uint32_t>::max();

} // namespace

cFileDisk::cFileDisk(char const *path, eOpenMode mode)
{
    open(path, mode);
}

cFileDisk::cFileDisk(cFileDisk &&other) noexcept
    : m_stream(std::exchange(other.m_stream, nullptr)), m_position(std::exchange(other.m_position, 0)),
      m_hasRead(other.m_hasRead)
{
}

cFileDisk &cFileDisk::operator=(cFileDisk &&other) noexcept
{
    if (this != &other) {
        close();
        m_stream = std::exchange(other.m_stream, nullptr);
        m_position = std::exchange(other.m_position, 0);
        m_hasRead = other.m_hasRead;
    }
    return *this;
}

cFileDisk::~cFileDisk()
{
    close();
}

unsigned int cFileDisk::read(void *buffer, unsigned int size)
{
    if (m_stream == nullptr || buffer == nullptr) {
        return 0;
    }
    // A file may have grown since its end was met.
    std::clearerr(m_stream);
    std::size_t const got = std::fread(buffer, 1, std::min(size, largestPosition - m_position), m_stream);
    m_position += static_cast<std::uint32_t>(got);
    m_hasRead = true;
    return static_cast<unsigned int>(got);
}

unsigned int cFileDisk::write(void const *buffer, unsigned int size)
{
    if (m_stream == nullptr || buffer == nullptr || size > largestPosition - m_position) {
        return 0;
    }
    if (m_hasRead && !os::seekFile(m_stream, m_position)) {
        return 0;
    }
    m_hasRead = false;
    if (!os::writeThrough(m_stream, buffer, size)) {
        os::seekFile(m_stream, m_position);
        return 0;
    }
    m_position += size;
    return size;
}

unsigned int cFileDisk::seek(unsigned int position)
{
    if (m_stream == nullptr) {
        return 0;
    }
    if (!os::seekFile(m_stream, position)) {
        return ~0u;
    }
    m_position = position;
    m_hasRead = false;
    return 0;
}

unsigned int cFileDisk::size() const
{
    return m_stream == nullptr
               ? 0
               : static_cast<unsigned int>(std::min<std::uint64_t>(os::fileSize(m_stream), largestPosition));
}

unsigned int cFileDisk::write(cFileMem const &source)
{
    return write(source.getData(), source.size());
}

bool cFileDisk::open(char const *path, eOpenMode mode)
{
    close();
    os::FilePtr file;
    switch (mode) {
    case OPEN_READ:
        file = os::openFile(path, "rb");
        break;
    case OPEN_READWRITE:
        file = os::openFile(path, "rb+");
        // Made by appending nothing: whatever made the first attempt fail, no content is lost.
        if (!file && os::openFile(path, "ab")) {
            file = os::openFile(path, "rb+");
        }
        break;
    case OPEN_WRITE:
        file = os::openFile(path, "wb");
        break;
    default:
        break;
    }
    m_stream = file.release();
    return m_stream != nullptr;
}

bool cFileDisk::close()
{
    os::FilePtr const closed(std::exchange(m_stream, nullptr));
    m_position = 0;
    m_hasRead = false;
    return true;
}

} // namespace Qel
