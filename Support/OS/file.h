#pragma once

#include "Support/export.h"

#include <cstddef>
#include <cstdio>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

namespace os {

inline constexpr char pathSeparator = '/'; ///< what the library joins disk paths with

/// A path as the system wants it: every backslash becomes a slash. Nothing else changes.
QEL_API std::string systemPath(char const *path);

/// The text of the last system error of the calling thread.
QEL_API std::string lastErrorText();

struct FileCloser {
    void operator()(std::FILE *file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

/// Opens a plain file through systemPath(). Folders are refused, also for reading.
/// @param mode  as for std::fopen
/// @return null on failure
QEL_API FilePtr openFile(char const *path, char const *mode);

/// Writes @p size bytes to @p path so that readers see the old content or the new one and nothing between:
/// aside first, then by renaming. Where the folder or a link at @p path does not allow that, writes in place.
/// @return false if not everything reached the file; the old content is then kept wherever possible
QEL_API bool replaceFile(char const *path, void const *data, std::size_t size);

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
