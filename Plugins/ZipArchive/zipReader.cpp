#include "zipReader.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <mutex>

namespace {

// libzip turns the members' times into seconds with a function of the C library that keeps the time zone for
// all threads.
std::mutex openLock;

struct MemberCloser {
    void operator()(zip_file_t *member) const { zip_fclose(member); }
};

// Reads up to a full buffer. @return -1 for damage
zip_int64_t readUpTo(zip_file_t *member, void *buffer, zip_uint64_t size)
{
    zip_uint64_t done = 0;
    while (done < size) {
        zip_int64_t const got = zip_fread(member, static_cast<char *>(buffer) + done, size - done);
        if (got < 0) {
            return -1;
        }
        if (got == 0) {
            break;
        }
        done += static_cast<zip_uint64_t>(got);
    }
    return static_cast<zip_int64_t>(done);
}

} // namespace

bool ZipReader::open(std::string &error)
{
    std::lock_guard const hold(openLock);
    zip_error_t failure;
    zip_error_init(&failure);
    zip_source_t *const source = zip_source_function_create(&ZipReader::serve, this, &failure);
    if (source != nullptr) {
        m_zip.reset(zip_open_from_source(source, ZIP_RDONLY, &failure));
        if (m_zip == nullptr) {
            zip_source_free(source);
        }
    }
    if (m_zip == nullptr) {
        error = zip_error_strerror(&failure);
    }
    zip_error_fini(&failure);
    return m_zip != nullptr;
}

std::uint32_t ZipReader::read(std::uint64_t member, std::uint32_t expected, void *buffer, std::uint32_t room,
                              std::string &error)
{
    std::unique_ptr<zip_file_t, MemberCloser> const file(zip_fopen_index(m_zip.get(), member, 0));
    if (file == nullptr) {
        error = zip_strerror(m_zip.get());
        return 0;
    }
    std::uint32_t const wanted = std::min(expected, room);
    zip_int64_t const got = readUpTo(file.get(), buffer, wanted);
    if (got == wanted && wanted < expected) {
        return wanted;
    }
    // Behind the last byte the checksum is compared, and there must be nothing more.
    char more = 0;
    zip_int64_t const rest = got == wanted ? zip_fread(file.get(), &more, 1) : 0;
    if (got < 0 || rest < 0) {
        error = zip_file_strerror(file.get());
        return 0;
    }
    if (got != wanted || rest > 0) {
        error = std::to_string(expected) + " bytes expected, " +
                (rest > 0 ? std::string("more") : std::to_string(got)) + " read";
        return 0;
    }
    return wanted;
}

std::size_t ZipReader::readBytes(void *data, std::size_t size)
{
    std::size_t done = 0;
    while (done < size) {
        if (m_position >= m_windowStart && m_position < m_windowStart + m_windowSize) {
            auto const from = static_cast<std::size_t>(m_position - m_windowStart);
            std::size_t const part = std::min(size - done, m_windowSize - from);
            std::memcpy(static_cast<char *>(data) + done, m_window.data() + from, part);
            done += part;
            m_position += part;
            continue;
        }
        if (size - done >= m_window.size()) {
            std::size_t const got = m_file.readAt(m_position, static_cast<char *>(data) + done, size - done);
            m_position += got;
            return done + got;
        }
        m_windowStart = m_position;
        m_windowSize = m_file.readAt(m_position, m_window.data(), m_window.size());
        if (m_windowSize == 0) {
            break;
        }
    }
    return done;
}

zip_int64_t ZipReader::serve(void *self, void *data, zip_uint64_t size, zip_source_cmd_t command)
{
    return static_cast<ZipReader *>(self)->serve(data, size, command);
}

zip_int64_t ZipReader::serve(void *data, zip_uint64_t size, zip_source_cmd_t command)
{
    switch (command) {
    case ZIP_SOURCE_OPEN:
        m_position = 0;
        return 0;
    case ZIP_SOURCE_READ:
        return static_cast<zip_int64_t>(readBytes(data, size));
    case ZIP_SOURCE_SEEK: {
        zip_error_t failure;
        zip_error_init(&failure);
        zip_int64_t const to =
            zip_source_seek_compute_offset(m_position, m_file.size(), data, size, &failure);
        zip_error_fini(&failure);
        if (to < 0) {
            return -1;
        }
        m_position = static_cast<std::uint64_t>(to);
        return 0;
    }
    case ZIP_SOURCE_TELL:
        return static_cast<zip_int64_t>(m_position);
    case ZIP_SOURCE_STAT: {
        auto *const stat = static_cast<zip_stat_t *>(data);
        zip_stat_init(stat);
        stat->size = m_file.size();
        stat->mtime = m_file.modTime();
        stat->valid = ZIP_STAT_SIZE | ZIP_STAT_MTIME;
        return sizeof *stat;
    }
    case ZIP_SOURCE_ERROR: {
        int const codes[] = {ZIP_ER_READ, EIO};
        std::memcpy(data, codes, sizeof codes);
        return sizeof codes;
    }
    case ZIP_SOURCE_SUPPORTS:
        return ZIP_SOURCE_SUPPORTS_SEEKABLE;
    case ZIP_SOURCE_CLOSE:
    case ZIP_SOURCE_FREE:
        return 0;
    default:
        return -1;
    }
}
