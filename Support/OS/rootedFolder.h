#pragma once

#include "Support/export.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace os {

/// A folder that no name and no link leads out of, and the plain files in it.
///
/// Paths are relative to it and separated by slashes. Links are followed as far as they stay inside; where
/// the system cannot see to that in one step, they are not followed at all.
///
/// @par Threads  Any number of threads may read at once.
class QEL_API RootedFolder {
public:
    struct File {
        std::string path;     ///< as it is spelled on the disk
        std::uint64_t size;   ///< bytes
        std::int64_t modTime; ///< seconds since 1970
    };

    RootedFolder() = default;
    ~RootedFolder();

    RootedFolder(RootedFolder const &) = delete;
    RootedFolder &operator=(RootedFolder const &) = delete;

    bool open(char const *path); ///< false if it is no folder or cannot be read

    /// All plain files in the folder and the ones below it, in byte order of their paths. A folder that
    /// several paths lead to is entered once; those more than 64 deep are left out.
    std::vector<File> list() const;

    /// @return false if there is no such plain file
    bool stat(char const *path, std::uint64_t &size, std::int64_t &modTime) const;

    /// Reads a file from its start.
    /// @param size  room in @p buffer
    /// @return bytes read: fewer than @p size if the file is shorter, 0 on failure
    std::size_t read(char const *path, void *buffer, std::size_t size) const;

private:
    struct Listing;

    int openInside(char const *path, int flags) const;
    void listInto(Listing &listing, std::string const &folder, unsigned depth) const;

    int m_handle = -1;
};

/// While one exists, the system seems unable to keep a path inside a folder in one step.
class QEL_API NoBeneathScope {
public:
    NoBeneathScope();
    ~NoBeneathScope();

    NoBeneathScope(NoBeneathScope const &) = delete;
    NoBeneathScope &operator=(NoBeneathScope const &) = delete;
};

} // namespace os
