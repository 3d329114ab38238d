#pragma once

#include "Support/export.h"

#include <cstddef>
#include <cstdint>

namespace os {

/// A plain file that is read at any place, without a position and without a buffer.
///
/// @par Threads  Any number of threads may read at once.
class QEL_API PlainFile {
public:
    PlainFile() = default;
    ~PlainFile();

    PlainFile(PlainFile const &) = delete;
    PlainFile &operator=(PlainFile const &) = delete;

    bool open(char const *path); ///< false for what is no plain file or cannot be read

    std::uint64_t size() const { return m_size; }      ///< bytes, when it was opened
    std::int64_t modTime() const { return m_modTime; } ///< seconds since 1970, when it was opened

    /// @return bytes read: fewer than @p size at the end, 0 on failure
    std::size_t readAt(std::uint64_t position, void *buffer, std::size_t size) const;

private:
    int m_handle = -1;
    std::uint64_t m_size = 0;
    std::int64_t m_modTime = 0;
};

} // namespace os
