#pragma once

#include "System/File/file.h"

#include <cstdint>
#include <cstring>

namespace Qel {

/// What the readers of image formats share: reads from a stream that may end anywhere and lie about anything.
class ImageSource {
public:
    explicit ImageSource(cFile &file) : m_file(file) {}

    /// Bytes from the position to the end.
    std::uint64_t left() const
    {
        unsigned int const size = m_file.size();
        unsigned int const position = m_file.tell();
        return position < size ? size - position : 0;
    }

    /// Moves on by @p bytes, to the end at most.
    void skip(std::uint64_t bytes);
    void seek(std::uint32_t position); ///< from the start, to the end at most

    /// A record of plain bytes. @return false if it is not there in full; its rest is zero then
    template <class Record>
    bool read(Record &record)
    {
        std::memset(&record, 0, sizeof record);
        return m_file.read(&record, sizeof record) == sizeof record;
    }

    /// Up to @p bytes bytes. @return how many there were
    std::uint32_t read(void *to, std::uint64_t bytes)
    {
        return m_file.read(to, static_cast<unsigned int>(bytes < 0xFFFFFFFF ? bytes : 0xFFFFFFFF));
    }

    /// May a canvas of so many bytes come out of what the stream still holds? No packing of the formats here
    /// makes a byte into more than 256, and a small picture may be cut short.
    bool allows(std::uint64_t canvasBytes) const
    {
        constexpr std::uint64_t smallPicture = 1 << 20;
        return canvasBytes <= smallPicture + 256 * left();
    }

private:
    cFile &m_file;
};

/// The bytes of a stream one after the other, through a small buffer. The stream is left behind the last byte
/// that was taken.
class ImageBytes {
public:
    explicit ImageBytes(cFile &file) : m_file(file), m_start(file.tell()) {}
    ~ImageBytes() { m_file.seek(m_start + m_taken); }
    ImageBytes(ImageBytes const &) = delete;
    ImageBytes &operator=(ImageBytes const &) = delete;

    /// @return false at the end
    bool next(unsigned char &byte)
    {
        if (m_at == m_count && !refill()) {
            return false;
        }
        byte = m_buffer[m_at++];
        ++m_taken;
        return true;
    }

    /// @return false if they are not all there
    bool next(unsigned char *bytes, unsigned int count)
    {
        for (unsigned int i = 0; i < count; ++i) {
            if (!next(bytes[i])) {
                return false;
            }
        }
        return true;
    }

private:
    bool refill();

    cFile &m_file;
    std::uint32_t m_start;
    std::uint32_t m_taken = 0;
    std::uint32_t m_at = 0;
    std::uint32_t m_count = 0;
    unsigned char m_buffer[1024];
};

} // namespace Qel
