#pragma once

#include "Support/export.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

namespace os {

inline constexpr char pathSeparator = '/'; ///< what the library joins disk paths with

/// A path as the system wants it: every backslash becomes a slash. Nothing else changes.
QEL_API std::string systemPath(char const *path);

/// The text of the last system error of the calling thread; empty if there was none.
QEL_API std::string lastErrorText();

struct FileCloser {
    void operator()(std::FILE *file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

/// Opens a file through systemPath(). Folders, pipes and sockets are refused, without waiting for anybody.
/// @param mode  as for std::fopen
/// @return null on failure
QEL_API FilePtr openFile(char const *path, char const *mode);

/// The length of an open file in bytes, 0 for a device. What stands in a buffer to be written does not count.
QEL_API std::uint64_t fileSize(std::FILE *file);

/// The same for plain files alone. @return false for anything else
QEL_API bool plainFileSize(std::FILE *file, std::uint64_t &size);

QEL_API bool seekFile(std::FILE *file, std::uint64_t position); ///< to a position from the start

/// Writes at the position and waits until the system has taken all of it. After a read the file has to be
/// positioned before.
/// @return false if it did not; what it did not take is dropped, and the file has to be positioned
QEL_API bool writeThrough(std::FILE *file, void const *data, std::size_t size);

/// Writes @p size bytes to @p path so that readers see the old content or the new one and nothing between:
/// aside first, then by renaming. Where the folder or a link at @p path does not allow that, writes in place.
/// @return false if not everything reached the file; the old content is then kept wherever possible
QEL_API bool replaceFile(char const *path, void const *data, std::size_t size);

QEL_API bool isTerminal(std::FILE *file); ///< Does a person see what is written there?

/// A file that texts are appended to by one system call each, with no buffer in between.
class QEL_API TextFile {
public:
    TextFile() = default;
    ~TextFile();

    TextFile(TextFile const &) = delete;
    TextFile &operator=(TextFile const &) = delete;

    /// Creates or empties the file. @return false if it cannot be opened; writes then go nowhere
    bool open(char const *path);

    /// Appends @p text. @return false if not all of it reached the file
    bool write(std::string_view text);

    /// Appends the pieces, one after the other, so that no other writer's text comes between them.
    /// @return false if not all of them reached the file
    bool write(std::initializer_list<std::string_view> pieces);

    bool isOpen() const { return m_handle >= 0; }

private:
    int m_handle = -1;
};

} // namespace os
