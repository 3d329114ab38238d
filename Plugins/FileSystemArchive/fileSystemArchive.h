#pragma once

#include "System/File/indexedArchive.h"

#include "Support/OS/rootedFolder.h"

#include <memory>
#include <mutex>
#include <string>

/// What the archive shows, from one reading of the folder to the next.
struct FolderContents {
    os::RootedFolder folder;
    Qel::ArchiveIndex index; // an entry's place is its path's
    std::string paths;       // as they are spelled on the disk

    std::mutex lock;      // over the rest
    os::RootedFile found; // by the last lookup, for the read that mostly follows
    std::size_t foundAt = Qel::ArchiveIndex::npos;

    char const *pathOf(std::size_t at) const { return paths.data() + index[at].place; }
    os::RootedFile take(std::size_t at);
};

/// A folder of plain files as an archive, type "FILESYSTEM".
///
/// The names on the disk may be in any case and hold any UTF-8; the archive finds them by their normal form,
/// by an index that is made when it is loaded and by refresh(). What is known of a file's size and time is
/// asked of the disk anew at each lookup.
///
/// The file that a lookup finds stays open for its read, until the next lookup.
class FileSystemArchive : public Qel::tIndexedArchive<FolderContents> {
public:
    explicit FileSystemArchive(char const *folderName);

protected:
    std::shared_ptr<FolderContents> readContents() const override;
    unsigned int readEntry(FolderContents &contents, std::size_t at, void *buffer,
                           unsigned int room) override;
    bool checkEntry(FolderContents &contents, std::size_t at, Qel::FileInfo *info) override;
};
