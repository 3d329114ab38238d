#pragma once

#include "Support/OS/plainFile.h"

#include <zip.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

/// One opening of a zip file by libzip, for one thread at a time.
///
/// Several share the file: each has a position of its own and a small window on it, so that the header of a
/// member and a short member behind it come with one call to the system.
class ZipReader {
public:
    /// @param file  must outlive the reader
    explicit ZipReader(os::PlainFile const &file) : m_file(file) {}

    ZipReader(ZipReader const &) = delete;
    ZipReader &operator=(ZipReader const &) = delete;

    bool open(std::string &error); ///< false if it is no zip file, and why
    zip_t *zip() const { return m_zip.get(); }

    /// Reads a member whole.
    /// @param expected  its size, as the archive declares it
    /// @param buffer    room for @p room bytes; no byte more is written
    /// @return bytes read: all, or what fits; 0 if the member is not what it is declared to be, and why
    std::uint32_t read(std::uint64_t member, std::uint32_t expected, void *buffer, std::uint32_t room,
                       std::string &error);

private:
    static zip_int64_t serve(void *self, void *data, zip_uint64_t size, zip_source_cmd_t command);
    zip_int64_t serve(void *data, zip_uint64_t size, zip_source_cmd_t command);
    std::size_t readBytes(void *data, std::size_t size);

    struct Discard {
        void operator()(zip_t *zip) const { zip_discard(zip); }
    };

    os::PlainFile const &m_file;
    std::uint64_t m_position = 0;
    std::uint64_t m_windowStart = 0;
    std::size_t m_windowSize = 0; // bytes that are valid
    std::array<unsigned char, 8192> m_window;
    std::unique_ptr<zip_t, Discard> m_zip; // before all else in its end: it still asks for the file
};
