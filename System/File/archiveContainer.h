#pragma once

#include "System/File/hashConstCharPtr.h"
#include "System/File/hashIndex.h"
#include "System/System/export.h"
#include "System/System/string.h"
#include "System/System/stringVector.h"

#include "Support/PoolHeap/internPool.h"

#include <atomic>
#include <cstdint>
#include <vector>

class PoolBlk;

namespace Qel {

class iArchive;
class iArchiveStreaming;
struct FileInfo;

/// A set of mounted archives, and one sorted table of all names in them.
///
/// A name is looked up in this order: in mCommonArchives, which is a container of its own with all that
/// follows here; then in this container's table; then in mInternals. In the table the archive that was added
/// last wins, and a file that mExternals has when an archive is added belongs to mExternals.
///
/// @code
/// Qel::cArchiveContainer files;
/// files.addArchive("media", "FILESYSTEM");
/// files.addArchive("patch.zip", "ZIP"); // wins over "media"
/// PoolBlk data;
/// if (files._findResourceData("Textures\\Stone.tga", data, 0x228FC766, nullptr)) ...
/// @endcode
///
/// @par Limits     Lookups are in normal form (lower case, slashes) and of at most 259 characters; a
///                 FileInfo holds 255.
/// @par Ownership  Owns its table, not the archives. An archive that dies is taken out of every container;
///                 a file that another archive has too is found there again after refreshArchive().
/// @par Threads    Takes no lock: what changes the container must not overlap with lookups in it. Debug
///                 builds stop when that happens.
class QEL_API cArchiveContainer {
public:
    cArchiveContainer();
    ~cArchiveContainer();

    cArchiveContainer(cArchiveContainer const &) = delete;
    cArchiveContainer &operator=(cArchiveContainer const &) = delete;

    /// Mounts an archive, which must be loaded. All files that it lists belong to it from now on, but for
    /// those that mExternals has. Entries without a name are passed over.
    void addArchive(iArchive &archive);

    /// Makes the archive through ArchiveManager::load() and mounts it. Writes a line to the standard output.
    /// Nothing is mounted if there is no such type.
    void addArchive(String const &name, String const &type);

    /// addArchive() on mCommonArchives.
    static void addCommonArchive(String const &name, String const &type);

    /// Makes the archive of last resort. mInternals is what ArchiveManager::load() gives, null included.
    static void setInternals(String const &name, String const &type);

    /// Makes the view of loose files, of type "FILESYSTEM", or rereads it if there is one. Archives that
    /// were added before it stay as they are until refreshArchive().
    static void refreshExternals(String const &path);

    void refreshArchive();              ///< rereads every archive and mounts all again, in their order
    static void refreshCommonArchive(); ///< refreshArchive() on mCommonArchives

    /// Forgets all archives and names, after the streamer's requests. The archives live on.
    void cleanupArchives();

    /// Looks a file up in the order told above.
    /// @param name  in any spelling; null and names of more than 259 characters are found nowhere
    /// @param info  filled by the archive; null to ask only whether there is one. After a failed lookup it
    ///              may hold anything
    bool _findResource(char const *name, FileInfo *info);

    /// The same for a name in normal form.
    bool _findResource(HashConstCharPtr const &file, FileInfo *info);

    /// Looks a file up and reads it whole.
    /// @param info  filled as by _findResource(); may be null
    /// @return false if there is no such file, no memory, or nothing could be read; in the last case @p block
    ///         holds bytes of no meaning
    bool _findResourceData(char const *name, PoolBlk &block, unsigned int memoryContext, FileInfo *info);

    /// Reads the file of a record whole, into a new block of its size.
    ///
    /// An archive may deliver less than its record says: up to 1 MiB that lacks is zeros, beyond that the
    /// read counts as failed, so that a record's lie about the size costs no memory.
    /// @return bytes read, at most the block's size; 0 on failure
    static unsigned int _readResourceData(FileInfo &info, PoolBlk &block, unsigned int memoryContext);

    /// Appends the names that match a pattern, in the order of their hashes; those of mCommonArchives after
    /// them.
    /// @param pattern  `*` and `?`, in any spelling; null and "*" take all
    /// @return the number of texts in @p out
    unsigned int getFileList(StringVector &out, char const *pattern) const;
    unsigned int getFileListSelf(StringVector &out, char const *pattern) const; ///< this container alone

    void setArchiveExternals(bool externals) { m_archiveExternals = externals; } ///< looked at by nobody

    /// Installs the background loader of all managers, or none.
    /// @param manager  not owned; one that a plugin installs is taken out when the plugin goes
    static void setStreamingMgr(iArchiveStreaming *manager);
    static void setStreamingEnabled(bool enabled) { mEnableStreaming = enabled; } ///< for hosts to ask
    static bool getStreamingEnabled() { return mEnableStreaming; }

    /// Takes a dying archive out of all containers and of mExternals and mInternals.
    static void _forgetArchive(iArchive &archive);

    static cArchiveContainer mCommonArchives; ///< searched first by all others
    static iArchive *mExternals;              ///< the view of loose files, or null
    static iArchive *mInternals;              ///< the archive of last resort, or null
    static iArchiveStreaming *streamer;       ///< the background loader, or null
    static bool mEnableStreaming;             ///< true at start; looked at by nobody in the library

private:
    class ChangeScope;

    // A line of the cache, with the text's beginning in it: a lookup waits for memory once.
    struct alignas(64) sFileEntry {
        char const *text; // in m_names
        std::uint32_t hash;
        std::uint32_t length; // of the text
        iArchive *archive;
        char head[40]; // of the text, zeros behind it

        bool operator<(sFileEntry const &other) const;
    };

    // A name in normal form that is looked for.
    struct Wanted {
        char const *text;
        std::uint32_t hash;
        std::uint32_t length;
        char const *head; // as many bytes as an entry has

        bool operator==(sFileEntry const &entry) const;
    };

    using NameHead = char[sizeof sFileEntry::head];
    static Wanted wantedOf(HashConstCharPtr const &file, NameHead &head);

    sFileEntry *findFileEntry(Wanted const &wanted);
    bool findWanted(Wanted const &wanted, FileInfo *info);
    bool findHere(Wanted const &wanted, FileInfo *info);
    void forget(iArchive &archive);
    void indexFiles();
    void checkNotChanging() const; // in debug builds

    InternPool m_names;
    std::vector<sFileEntry> m_files; // by hash, then by name
    std::vector<iArchive *> m_archives;
    bool m_archiveExternals = false;

    HashIndex m_index;
    std::atomic<void const *> m_changedBy{nullptr}; // a mark of the thread that is changing it
    cArchiveContainer *m_next;                      // all containers
    cArchiveContainer *m_previous = nullptr;
};

} // namespace Qel
