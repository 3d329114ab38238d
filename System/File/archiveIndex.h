#pragma once

#include "System/File/hashConstCharPtr.h"
#include "System/File/hashIndex.h"
#include "System/System/export.h"
#include "System/System/string.h"
#include "System/System/stringVector.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Qel {

class iArchive;
struct FileInfo;

/// The table of contents of an archive, for those who write one: names in normal form to what is known of the
/// files.
///
/// It is the one place where names out of an archive are judged: what could lead out of it never gets in, so
/// that it can be found by no spelling.
///
/// @code
/// ArchiveIndex index;
/// for (...)
///     if (!index.add(name, entry)) ... // say that it is left out
/// for (auto const &[kept, dropped] : index.finish()) ... // say that one name came twice
/// std::size_t const at = index.find(file);
/// @endcode
///
/// @par Threads  After finish() it may be read on any thread.
class QEL_API ArchiveIndex {
public:
    static constexpr std::size_t npos = static_cast<std::size_t>(-1);

    struct Entry {
        std::uint32_t size = 0;       ///< bytes that a reader gets
        std::uint32_t packedSize = 0; ///< bytes as stored
        std::int64_t modTime = 0;     ///< seconds since 1970; 0 if not known
        std::uint64_t place = 0;      ///< the archive's own: where the file is
        std::uint32_t hash = 0;       ///< set by add()
        std::uint32_t name = 0;       ///< set by add()
    };

    /// Two files of one name.
    struct Double {
        Entry kept;
        Entry dropped;
    };

    /// May a file of an archive have this name? Not if it is empty or longer than 255 characters, if it is
    /// absolute or has a drive, or if one of its elements is empty, "." or "..". A backslash separates, too.
    static bool isSafeName(char const *name);

    /// Adds a file.
    /// @param name  in any spelling
    /// @return false if the name is not safe; the file is then left out
    bool add(char const *name, Entry entry);

    /// Puts the table in order. Of files of one name the one added first stays.
    /// @return those of which another was dropped
    std::vector<Double> finish();

    std::size_t size() const { return m_entries.size(); }
    Entry const &operator[](std::size_t index) const { return m_entries[index]; }
    char const *nameOf(Entry const &entry) const { return m_names.data() + entry.name; } ///< in normal form

    /// @param file  in normal form
    /// @return its index, or npos
    std::size_t find(HashConstCharPtr const &file) const;

    /// The index of a record's file: its handle, if that still fits its name; else where the name is now.
    std::size_t find(FileInfo const &info) const;

    /// Name and hash of a file, for iArchive::getFile(). A null text for an index that is none.
    HashConstCharPtr file(int index) const;

    /// Fills a record from an entry, its handle being the index.
    void fill(std::size_t index, iArchive &archive, FileInfo &info) const;

    /// What iArchive::listFolder() gives.
    unsigned int listFolder(char const *folder, StringVector &out) const;

private:
    std::vector<Entry> m_entries;
    std::string m_names;
    HashIndex m_index;
};

} // namespace Qel
