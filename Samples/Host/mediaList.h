#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

/// What files should hold, told by others than the library: a list, the disk itself, or the table of contents
/// that a zip file's maker wrote. Names are known in normal form.
class MediaList {
public:
    struct Contents {
        std::uint32_t crc; ///< CRC-32 as zip files have it
        std::uint64_t size;
    };

    /// Adds the lines "crc32 size name" of a file.
    /// @throws std::runtime_error if it cannot be read
    void addList(std::string const &file);

    /// Adds a folder's files. What they hold is read from the disk when it is first asked for.
    void addFolder(std::string const &folder);

    /// Adds a zip file's members, which win over what was there under their names.
    /// @throws std::runtime_error if it cannot be read
    void addZip(std::string const &file);

    /// @param name  in normal form
    /// @return nothing if nobody has told
    std::optional<Contents> find(std::string const &name);

    bool holds(std::string const &name) const { return m_files.contains(name); }
    std::size_t size() const { return m_files.size(); } ///< files that are known

private:
    struct Entry {
        std::string path; // on the disk, while what it holds is not known
        std::optional<Contents> contents;
    };

    std::map<std::string, Entry> m_files;
};
