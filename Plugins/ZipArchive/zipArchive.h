#pragma once

#include "zipReader.h"

#include "System/File/indexedArchive.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

/// What the archive shows, from one reading of its table to the next.
struct ZipContents {
    os::PlainFile file;
    Qel::ArchiveIndex index; // an entry's place is the member's number
    Qel::String path;
    Qel::String comment;
    zip_int64_t members = 0;

    std::mutex lock; // over the readers that nobody uses
    std::vector<std::unique_ptr<ZipReader>> idle;

    std::unique_ptr<ZipReader> take(std::string &error);
    void giveBack(std::unique_ptr<ZipReader> reader);
    void addMember(zip_t *zip, zip_uint64_t number);
};

/// A zip file as an archive, type "ZIP": stored and deflated members.
///
/// What a member is declared to be is checked when the archive is loaded, as far as that can be told, and
/// again when it is read: its bytes must be as many as declared and have the declared checksum.
class ZipArchive : public Qel::tIndexedArchive<ZipContents> {
public:
    explicit ZipArchive(char const *fileName);

    Qel::String getComment() const override;
    std::int64_t getModTime() override;

protected:
    std::shared_ptr<ZipContents> readContents() const override;
    unsigned int readEntry(ZipContents &contents, std::size_t at, void *buffer, unsigned int room) override;
};
