#include "Support/OS/plainFile.h"

#include "Support/OS/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace os {

PlainFile::~PlainFile()
{
    if (m_handle >= 0) {
        ::close(m_handle);
    }
}

bool PlainFile::open(char const *path)
{
    int const handle = ::open(systemPath(path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat status {};
    if (handle < 0 || fstat(handle, &status) != 0 || !S_ISREG(status.st_mode)) {
        if (handle >= 0) {
            ::close(handle);
        }
        return false;
    }
    if (m_handle >= 0) {
        ::close(m_handle);
    }
    m_handle = handle;
    m_size = static_cast<std::uint64_t>(status.st_size);
    m_modTime = status.st_mtim.tv_sec;
    return true;
}

std::size_t PlainFile::readAt(std::uint64_t position, void *buffer, std::size_t size) const
{
    std::size_t done = 0;
    while (done < size) {
        ssize_t const got = ::pread(m_handle, static_cast<char *>(buffer) + done, size - done,
                                    static_cast<off_t>(position + done));
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            break;
        }
        done += static_cast<std::size_t>(got);
    }
    return done;
}

} // namespace os
