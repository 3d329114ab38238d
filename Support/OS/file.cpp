#include "Support/OS/file.h"

#include <fcntl.h>
#include <stdio_ext.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>

namespace os {

namespace {

bool writeAll(int handle, char const *data, std::size_t size)
{
    while (size > 0) {
        ssize_t const written = ::write(handle, data, size);
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        data += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

bool writeInPlace(std::string const &path, char const *data, std::size_t size)
{
    int const handle = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (handle < 0) {
        return false;
    }
    bool const whole = writeAll(handle, data, size);
    return ::close(handle) == 0 && whole;
}

} // namespace

std::string systemPath(char const *path)
{
    std::string result(path == nullptr ? "" : path);
    for (char &c : result) {
        if (c == '\\') {
            c = '/';
        }
    }
    return result;
}

std::string lastErrorText()
{
    return errno == 0 ? std::string() : std::strerror(errno);
}

FilePtr openFile(char const *path, char const *mode)
{
    int flags = O_CLOEXEC | O_NONBLOCK; // a pipe without a partner would be waited for
    bool const both = std::strchr(mode, '+') != nullptr;
    switch (mode[0]) {
    case 'w':
        flags |= (both ? O_RDWR : O_WRONLY) | O_CREAT | O_TRUNC;
        break;
    case 'a':
        flags |= (both ? O_RDWR : O_WRONLY) | O_CREAT | O_APPEND;
        break;
    default:
        flags |= both ? O_RDWR : O_RDONLY;
    }
    int const handle = ::open(systemPath(path).c_str(), flags, 0666);
    if (handle < 0) {
        return nullptr;
    }
    struct stat status {};
    bool const known = fstat(handle, &status) == 0;
    if (!known || !(S_ISREG(status.st_mode) || S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode))) {
        ::close(handle);
        errno = known && S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
        return nullptr;
    }
    fcntl(handle, F_SETFL, flags & ~O_NONBLOCK);
    FilePtr file(fdopen(handle, mode));
    if (!file) {
        ::close(handle);
    }
    return file;
}

std::uint64_t fileSize(std::FILE *file)
{
    struct stat status {};
    return fstat(fileno(file), &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

bool plainFileSize(std::FILE *file, std::uint64_t &size)
{
    struct stat status {};
    if (fstat(fileno(file), &status) != 0 || !S_ISREG(status.st_mode)) {
        return false;
    }
    size = static_cast<std::uint64_t>(status.st_size);
    return true;
}

bool seekFile(std::FILE *file, std::uint64_t position)
{
    return fseeko(file, static_cast<off_t>(position), SEEK_SET) == 0;
}

bool writeThrough(std::FILE *file, void const *data, std::size_t size)
{
    if (std::fwrite(data, 1, size, file) == size && std::fflush(file) == 0) {
        return true;
    }
    // What is left in the buffer would go out with the next write. Purging takes it away and leaves behind
    // where the buffer was read from, by which a seek would find other bytes: a flush has that forgotten.
    __fpurge(file);
    std::fflush(file);
    std::clearerr(file);
    return false;
}

bool replaceFile(char const *path, void const *data, std::size_t size)
{
    std::string const target = systemPath(path);
    auto const *const bytes = static_cast<char const *>(data);

    // A rename would turn a link into a file, and give a special file's place to a plain one.
    struct stat before {};
    bool const exists = lstat(target.c_str(), &before) == 0;
    if (exists && (!S_ISREG(before.st_mode) || before.st_nlink != 1 || access(target.c_str(), W_OK) != 0)) {
        return writeInPlace(target, bytes, size);
    }

    static std::atomic<unsigned> count{0};
    std::string const aside = target + '.' + std::to_string(getpid()) + '.' + std::to_string(count++);
    int const handle = ::open(aside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, exists ? 0600 : 0666);
    if (handle < 0) {
        return writeInPlace(target, bytes, size);
    }
    bool const kept = !exists || ((geteuid() != 0 || fchown(handle, before.st_uid, before.st_gid) == 0) &&
                                  fchmod(handle, before.st_mode & 07777) == 0);
    bool const whole = writeAll(handle, bytes, size);
    if (::close(handle) == 0 && whole && kept && std::rename(aside.c_str(), target.c_str()) == 0) {
        return true;
    }
    unlink(aside.c_str());
    return false;
}

bool isTerminal(std::FILE *file)
{
    return isatty(fileno(file)) != 0;
}

TextFile::~TextFile()
{
    if (m_handle >= 0) {
        ::close(m_handle);
    }
}

bool TextFile::open(char const *path)
{
    int const handle =
        ::open(systemPath(path).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0666);
    if (handle < 0) {
        return false;
    }
    if (m_handle >= 0) {
        ::close(m_handle);
    }
    m_handle = handle;
    return true;
}

bool TextFile::write(std::string_view text)
{
    return m_handle >= 0 && writeAll(m_handle, text.data(), text.size());
}

bool TextFile::write(std::initializer_list<std::string_view> pieces)
{
    std::size_t total = 0;
    for (std::string_view const piece : pieces) {
        total += piece.size();
    }
    std::array<char, 4352> shortText; // a formatted text and what goes before it
    std::string longText;
    char *gathered = shortText.data();
    if (total > shortText.size()) {
        longText.resize(total);
        gathered = longText.data();
    }
    char *end = gathered;
    for (std::string_view const piece : pieces) {
        std::memcpy(end, piece.data(), piece.size());
        end += piece.size();
    }
    return write({gathered, total});
}

} // namespace os
