#pragma once

#include "System/File/hashConstCharPtr.h"
#include "System/Patterns/resource.h"
#include "System/System/export.h"
#include "System/System/stringVector.h"

#include <cstdint>

namespace Qel {

class cFile;
struct FileInfo;

/// A pack of files, or a view of plain ones: what a plugin supplies for a type of archive.
///
/// A plugin overrides the eight pure operations, which are all that the library calls; the others are there
/// for hosts and tools and say "not supported" unless overridden. Names are in normal form throughout: lower
/// case and slashes, relative to the archive. An archive opens only what it has listed: a name with ".." or
/// a drive in it, or an absolute one, is not there.
///
/// @par Ownership  ArchiveManager owns archives, and containers mount them. One that dies is taken out of
///                 every container, and its files are then not found any more.
/// @par Threads    Called on the thread that drives the resource managers; readFile() alone also on a
///                 streamer's threads, several at a time, so an archive locks what that needs. load(),
///                 unload() and refresh() may come while they run.
class QEL_API iArchive : public cResource {
public:
    iArchive() = default;

    /// @param archiveName  the resource's name, as ArchiveFactory::createInstance() was given it
    explicit iArchive(char const *archiveName);
    iArchive(iArchive const &) = default;
    iArchive &operator=(iArchive const &) = default;
    ~iArchive() override;

protected:
    bool load() override = 0;   ///< opens the archive. @return false if it cannot be used
    void unload() override = 0; ///< closes it; nothing is found in it until it is loaded again

public:
    virtual String getComment() const; ///< the archive's comment; empty if there is none
    virtual bool isReadOnly() const;   ///< true unless the archive can be written
    virtual std::int64_t getModTime(); ///< last change in seconds since 1970; 0 if not known

    /// Does the archive hold the file?
    virtual bool exists(HashConstCharPtr const &file) = 0;

    /// Opens a stream on a file.
    /// @return a stream that closeFile() takes back; null on failure or if not supported
    virtual cFile *openFile(HashConstCharPtr const &file);
    virtual void closeFile(cFile *stream); ///< takes back what openFile() gave; null is allowed

    /// Looks a file up. Called for every lookup that is to give a record.
    /// @param info  filled with at least name, size, handle and archive if it is not null
    /// @return false if the archive does not hold it; @p info is then not looked at
    virtual bool findFile(char const *fileName, FileInfo *info, unsigned int hash) = 0;

    /// The record of the file that getFile() gives for an index.
    virtual bool getFileInfo(int index, FileInfo *info);

    /// Reads a file whole. Called on any thread.
    /// @param info    as findFile() filled it
    /// @param buffer  @p room bytes; not a byte more is written
    /// @param handle  the handle of @p info
    /// @return bytes delivered, 0 on failure. A file that turns out shorter than its record said gives fewer:
    ///         the caller fills up with zeros
    virtual unsigned int readFile(FileInfo *info, void *buffer, unsigned int room, unsigned int handle) = 0;

    /// Stores a file whole, in place of one of that name.
    /// @return bytes taken, 0 on failure or if not supported
    virtual unsigned int writeFile(char const *fileName, void const *buffer, unsigned int bytes);
    virtual bool removeFile(char const *fileName);             ///< false if not supported
    virtual bool renameFile(char const *from, char const *to); ///< false if not supported
    virtual bool createFolder(char const *folder);             ///< false if not supported
    virtual bool removeFolder(char const *folder);             ///< false if not supported

    /// Appends the names that stand directly in a folder, those of folders with a slash behind.
    /// @param folder  without a slash at its end; "" for the root
    /// @return the number of names appended; 0 if not supported
    virtual unsigned int listFolder(char const *folder, StringVector &out);
    virtual std::int64_t getFileTime(HashConstCharPtr const &file); ///< seconds since 1970; 0 if not known
    virtual bool setFileTime(char const *fileName, std::int64_t seconds); ///< false if not supported

    /// How many files the archive lists.
    virtual int getNumFiles() = 0;

    /// Name and hash of a listed file.
    /// @param index  0 to getNumFiles() - 1
    /// @return valid until the archive changes; a null text is passed over
    virtual HashConstCharPtr getFile(int index) = 0;

    virtual void refresh() = 0; ///< rereads the table of contents

private:
    [[maybe_unused]] std::uint16_t m_reserved = 0;
};

} // namespace Qel
