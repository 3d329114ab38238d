#pragma once

#include "System/File/archive.h"
#include "System/File/archiveIndex.h"
#include "System/File/fileInfo.h"

#include <memory>
#include <mutex>
#include <utility>

namespace Qel {

/// An archive whose table of contents is an ArchiveIndex: what is the same in archives of any format.
///
/// A format supplies two operations, one that reads the table and one that reads a file. What it has to keep
/// for the second, it keeps beside the index.
///
/// @code
/// struct PackContents {
///     Qel::ArchiveIndex index; // with places of the pack's own
///     os::PlainFile file;
/// };
///
/// class PackArchive : public Qel::tIndexedArchive<PackContents> {
/// public:
///     explicit PackArchive(char const *archiveName) : tIndexedArchive(archiveName) {}
///
/// protected:
///     std::shared_ptr<PackContents> readContents() const override;
///     unsigned int readEntry(PackContents &contents, std::size_t at, void *buffer,
///                            unsigned int room) override
///     {
///         return static_cast<unsigned int>(
///             contents.file.readAt(contents.index[at].place, buffer, room));
///     }
/// };
/// @endcode
///
/// @tparam Contents  has an ArchiveIndex `index` and dies at no fixed time: a thread that reads keeps the
///                   contents that it began with while the archive is reread
///
/// @par Threads  As iArchive asks. The index is only read once readContents() has given it; what else of the
///               contents changes when files are read, needs a lock of its own.
template <class Contents>
class tIndexedArchive : public iArchive {
public:
    /// @param archiveName  the resource's name, as ArchiveFactory::createInstance() was given it
    explicit tIndexedArchive(char const *archiveName) : iArchive(archiveName) {}

    bool exists(HashConstCharPtr const &file) override { return findFile(file.text, nullptr, file.hash); }

    bool findFile(char const *fileName, FileInfo *info, unsigned int hash) override
    {
        auto const shown = contents();
        std::size_t const at = shown ? shown->index.find({fileName, hash}) : ArchiveIndex::npos;
        if (at == ArchiveIndex::npos) {
            return false;
        }
        if (info != nullptr) {
            shown->index.fill(at, *this, *info);
        }
        return checkEntry(*shown, at, info);
    }

    unsigned int readFile(FileInfo *info, void *buffer, unsigned int room, unsigned int) override
    {
        auto const shown = contents();
        std::size_t const at = shown && info != nullptr ? shown->index.find(*info) : ArchiveIndex::npos;
        return at == ArchiveIndex::npos ? 0 : readEntry(*shown, at, buffer, room);
    }

    unsigned int listFolder(char const *folder, StringVector &out) override
    {
        auto const shown = contents();
        return shown ? shown->index.listFolder(folder, out) : 0;
    }

    std::int64_t getFileTime(HashConstCharPtr const &file) override
    {
        FileInfo info;
        return findFile(file.text, &info, file.hash) ? info.modTime : 0;
    }

    int getNumFiles() override
    {
        auto const shown = contents();
        return shown ? static_cast<int>(shown->index.size()) : 0;
    }

    HashConstCharPtr getFile(int index) override
    {
        auto const shown = contents();
        return shown ? shown->index.file(index) : HashConstCharPtr();
    }

    void refresh() override { show(readContents()); }

protected:
    bool load() override
    {
        auto fresh = readContents();
        bool const there = fresh != nullptr;
        show(std::move(fresh));
        return there;
    }

    void unload() override { show(nullptr); }

    /// Opens what getName() names and makes its table, with ArchiveIndex::finish() called. Logs what is left
    /// out. Called by load() and refresh(), on the thread that drives the resource managers.
    /// @return null if there is no archive; it then holds no file
    virtual std::shared_ptr<Contents> readContents() const = 0;

    /// Reads a file whole; as iArchive::readFile(). Called on any thread.
    /// @param at      the file's entry in the index
    /// @param buffer  @p room bytes; not a byte more is written
    /// @return bytes delivered, 0 on failure
    virtual unsigned int readEntry(Contents &contents, std::size_t at, void *buffer, unsigned int room) = 0;

    /// Has the last word on a lookup, where the index alone does not know.
    /// @param info  filled from the index, to be corrected; null if only the answer is asked for
    /// @return false if the file is not there any more
    virtual bool checkEntry([[maybe_unused]] Contents &contents, [[maybe_unused]] std::size_t at,
                            [[maybe_unused]] FileInfo *info)
    {
        return true;
    }

    std::shared_ptr<Contents> contents() const ///< null while the archive is not loaded
    {
        std::lock_guard const hold(m_lock);
        return m_contents;
    }

private:
    void show(std::shared_ptr<Contents> fresh)
    {
        std::lock_guard const hold(m_lock);
        m_contents.swap(fresh);
    }

    mutable std::mutex m_lock; // over the pointer
    std::shared_ptr<Contents> m_contents;
};

} // namespace Qel
