#pragma once

#include "Support/export.h"

#include <compare>
#include <cstdint>
#include <string>
#include <vector>

namespace os {

enum class FileKind {
    File,   ///< a plain file
    Folder, ///< a directory
    Other,  ///< a device, a pipe, a socket
};

/// What tells one file of the machine from every other while both exist.
struct FileId {
    std::uint64_t device = 0;
    std::uint64_t number = 0;

    // NOLINTNEXTLINE(modernize-use-nullptr): it takes the comparison with 0 in here for a pointer.
    auto operator<=>(FileId const &) const = default;
};

struct FileStatus {
    FileKind kind = FileKind::Other;
    FileId id;
    std::uint64_t size = 0;   ///< bytes of a plain file, 0 of anything else
    std::int64_t modTime = 0; ///< seconds since 1970
};

/// Asks about a path, through systemPath(); links are followed.
/// @return false if there is nothing that can be asked about; @p status is then as it was
QEL_API bool fileStatus(char const *path, FileStatus &status);

struct FolderEntry {
    std::string name; ///< without its folder
    FileKind kind = FileKind::Other;
    bool isLink = false; ///< then kind is that of what it leads to
};

/// Lists a folder without "." and "..", sorted by the bytes of the names. Links that lead nowhere are left
/// out, and so are names with a backslash, which no path here can reach.
/// @param path  through systemPath(); empty for the working folder
/// @return false if it cannot be listed; @p entries is then empty
QEL_API bool listFolder(char const *path, std::vector<FolderEntry> &entries);

// Files as a whole. Paths go through systemPath(); on failure lastErrorText() says why.

QEL_API bool removeFile(char const *path); ///< a file or a link, never a folder

/// Copies a plain file with its rights and its time of change. A file that is there already is replaced at
/// once and whole, unless it has several names or is a link: that is written in place.
/// @param failIfExists  leave a file that is there alone
/// @return false if the copy is not complete; there is then none, and what stood there is kept wherever
///         possible
QEL_API bool copyFile(char const *from, char const *to, bool failIfExists);

/// Moves a file or a folder; a file also to another disk. Never replaces anything.
QEL_API bool moveFile(char const *from, char const *to);

QEL_API bool touchFile(char const *path); ///< sets the time of change of a plain file to now; creates none

} // namespace os
