#pragma once

#include "System/File/archive.h"

#include <memory>
#include <mutex>

/// A zip file as an archive, type "ZIP": stored and deflated members.
///
/// What a member is declared to be is checked when the archive is loaded, as far as that can be told, and
/// again when it is read: its bytes must be as many as declared and have the declared checksum.
class ZipArchive : public Qel::iArchive {
public:
    explicit ZipArchive(char const *fileName);
    ~ZipArchive() override;

    Qel::String getComment() const override;
    std::int64_t getModTime() override;
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

    std::shared_ptr<View> view() const;
    void setView(std::shared_ptr<View> view);
    std::shared_ptr<View> makeView() const;

    mutable std::mutex m_lock; // over the pointer: a streamer reads while the archive is reread
    std::shared_ptr<View> m_view;
};
