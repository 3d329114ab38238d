#include "System/File/fileDisk.h"

#include "Support/OS/file.h"
#include "System/File/fileMem.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace Qel {

namespace {

constexpr std::uint64_t largestPosition = std::numeric_limits<std::uint32_t>::max();

unsigned int cut(std::uint64_t position)
{
    return static_cast<unsigned int>(std::min(position, largestPosition));
}

} // namespace

cFileDisk::cFileDisk(char const *path, eOpenMode mode)
{
    open(path, mode);
}

cFileDisk::cFileDisk(cFileDisk &&other) noexcept : m_stream(std::exchange(other.m_stream, nullptr))
{
}

cFileDisk &cFileDisk::operator=(cFileDisk &&other) noexcept
{
    if (this != &other) {
        close();
        m_stream = std::exchange(other.m_stream, nullptr);
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
    std::uint64_t const left = largestPosition - cut(os::tellFile(m_stream));
    // A file may have grown since its end was met.
    std::clearerr(m_stream);
    std::size_t const count = static_cast<std::size_t>(std::min<std::uint64_t>(size, left));
    return static_cast<unsigned int>(std::fread(buffer, 1, count, m_stream));
}

unsigned int cFileDisk::write(void const *buffer, unsigned int size)
{
    if (m_stream == nullptr || buffer == nullptr || os::tellFile(m_stream) + size > largestPosition) {
        return 0;
    }
    return os::writeThrough(m_stream, buffer, size) ? size : 0;
}

unsigned int cFileDisk::seek(unsigned int position)
{
    return m_stream == nullptr || os::seekFile(m_stream, position) ? 0 : ~0u;
}

unsigned int cFileDisk::size() const
{
    return m_stream == nullptr ? 0 : cut(os::fileSize(m_stream));
}

unsigned int cFileDisk::tell() const
{
    return m_stream == nullptr ? 0 : cut(os::tellFile(m_stream));
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
    return true;
}

} // namespace Qel
