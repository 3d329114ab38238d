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
    struct Status {
        std::uint64_t size = 0;   ///< bytes
        std::int64_t modTime = 0; ///< seconds since 1970
    };

    struct File {
        std::string path; ///< as it is spelled on the disk
        Status status;
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
    bool stat(char const *path, Status &status) const;

private:
    friend class RootedFile;
    struct Listing;

    int openInside(char const *path, int flags) const;
    void listInto(Listing &listing, std::string const &folder, unsigned depth) const;

    int m_handle = -1;
};

/// A file in a RootedFolder, open for reading.
///
/// @par Threads  One at a time.
class QEL_API RootedFile {
public:
    RootedFile() = default;
    RootedFile(RootedFile &&other) noexcept;
    RootedFile &operator=(RootedFile &&other) noexcept;
    ~RootedFile();

    /// Opens a file that has been seen to be a plain one. What has come in its place is opened too, as long
    /// as it is inside, but nothing waits for it.
    bool open(RootedFolder const &folder, char const *path);

    /// Opens a file and tells its size and time.
    /// @return false if there is no such plain file
    bool open(RootedFolder const &folder, char const *path, RootedFolder::Status &status);

    bool isOpen() const { return m_handle >= 0; }

    /// Reads from where the last read ended, at first from the start.
    /// @param size  room in @p buffer
    /// @return bytes read: fewer than @p size if the file is shorter, 0 on failure
    std::size_t read(void *buffer, std::size_t size);

private:
    void close();

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
