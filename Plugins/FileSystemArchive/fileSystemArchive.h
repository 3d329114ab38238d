#pragma once

#include "System/File/archive.h"

#include <memory>
#include <mutex>

/// A folder of plain files as an archive, type "FILESYSTEM".
///
/// The names on the disk may be in any case and hold any UTF-8; the archive finds them by their normal form,
/// by an index that is made when it is loaded and by refresh(). What is known of a file's size and time is
/// asked of the disk anew at each lookup.
class FileSystemArchive : public Qel::iArchive {
public:
    explicit FileSystemArchive(char const *folderName);
    ~FileSystemArchive() override;

    bool exists(Qel::HashConstCharPtr const &file) override;
    bool findFile(char const *fileName, Qel::FileInfo *info, unsigned int hash) override;
    unsigned int readFile(Qel::FileInfo *info, void *buffer, unsigned int room, unsigned int handle) override;
    unsigned int listFolder(char const *folder, Qel::StringVector &out) override;
    std::int64_t getFileTime(Qel::HashConstCharPtr const &file) override;
    int getNumFiles() override;
    Qel::HashConstCharPtr getFile(int index) override;
    void refresh() override;

protected:
    bool load() override;
    void unload() override;

private:
    struct View;

    std::shared_ptr<View const> view() const;
    void setView(std::shared_ptr<View const> view);
    std::shared_ptr<View const> makeView() const;

    mutable std::mutex m_lock; // over the pointer: a streamer reads while the archive is reread
    std::shared_ptr<View const> m_view;
};
