#pragma once

#include <dirent.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <memory>
#include <utility>

// What the sources of this folder hold the system's files with. No public header includes it.
namespace os {

/// Closes a file's number when it goes, and leaves the error that is being reported as it is.
class Handle {
public:
    explicit Handle(int handle) : m_handle(handle) {}
    ~Handle()
    {
        int const error = errno;
        close();
        errno = error;
    }

    Handle(Handle const &) = delete;
    Handle &operator=(Handle const &) = delete;

    int get() const { return m_handle; }
    bool isOpen() const { return m_handle >= 0; }
    int release() { return std::exchange(m_handle, -1); }

    /// Closes at once. @return false if the system reports a failure, as of a write that came late
    bool close()
    {
        int const handle = release();
        return handle < 0 || ::close(handle) == 0;
    }

    void reset(int handle)
    {
        close();
        m_handle = handle;
    }

private:
    int m_handle;
};

struct FolderCloser {
    void operator()(DIR *folder) const
    {
        int const error = errno;
        closedir(folder);
        errno = error;
    }
};
using FolderPtr = std::unique_ptr<DIR, FolderCloser>;

/// Reads piece by piece until the buffer is full, the file ends or the system reports a failure.
/// @param readPiece  takes where to, how much, and how much there is already; answers as ::read() does
/// @return bytes read
template <typename ReadPiece>
std::size_t readFully(void *buffer, std::size_t size, ReadPiece readPiece)
{
    std::size_t done = 0;
    while (done < size) {
        ssize_t const got = readPiece(static_cast<char *>(buffer) + done, size - done, done);
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
