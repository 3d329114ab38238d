#include "Support/OS/plainFile.h"

#include "Support/OS/file.h"
#include "Support/OS/handle.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace os {

PlainFile::~PlainFile()
{
    if (m_handle >= 0) {
        ::close(m_handle);
    }
}

bool PlainFile::open(char const *path)
{
    Handle handle(::open(systemPath(path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (!handle.isOpen() || fstat(handle.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return false;
    }
    if (m_handle >= 0) {
        ::close(m_handle);
    }
    m_handle = handle.release();
    m_size = static_cast<std::uint64_t>(status.st_size);
    m_modTime = status.st_mtim.tv_sec;
    return true;
}

std::size_t PlainFile::readAt(std::uint64_t position, void *buffer, std::size_t size) const
{
    return readFully(buffer, size, [=, this](char *to, std::size_t room, std::size_t done) {
        return ::pread(m_handle, to, room, static_cast<off_t>(position + done));
    });
}

} // namespace os
