#pragma once

#include "System/File/archive.h"
#include "System/File/fileInfo.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace test {

/// An archive of files in memory, which lies where a test tells it to.
class MemoryArchive : public Qel::iArchive {
public:
    using Files = std::vector<std::pair<std::string, std::string>>; // names in normal form, contents

    explicit MemoryArchive(char const *archiveName, Files content = {})
        : iArchive(archiveName), files(std::move(content))
    {
    }

    bool exists(Qel::HashConstCharPtr const &file) override { return indexOf(file.text) < files.size(); }

    bool findFile(char const *file, Qel::FileInfo *info, unsigned int) override
    {
        ++finds;
        std::size_t const index = indexOf(file);
        if (index == files.size() || answersNo) {
            return false;
        }
        if (info != nullptr) {
            std::memset(info->name, 'x', sizeof info->name); // not terminated where the name is too long
            std::memcpy(info->name, file, std::min(sizeof info->name, std::strlen(file) + 1));
            info->size =
                sizeOf ? sizeOf(files[index].second) : static_cast<std::uint32_t>(files[index].second.size());
            info->handle = static_cast<std::uint32_t>(index);
            info->archive = this;
        }
        return true;
    }

    unsigned int readFile(Qel::FileInfo *, void *buffer, unsigned int room, unsigned int handle) override
    {
        ++reads;
        std::string const &content = files.at(handle).second;
        std::memcpy(buffer, content.data(), std::min<std::size_t>(content.size(), room));
        return claims ? claims(content)
                      : static_cast<unsigned int>(std::min<std::size_t>(content.size(), room));
    }

    int getNumFiles() override { return countClaimed != 0 ? countClaimed : static_cast<int>(files.size()); }

    Qel::HashConstCharPtr getFile(int index) override
    {
        auto const at = static_cast<std::size_t>(index);
        return at < files.size() ? Qel::HashConstCharPtr(files[at].first.c_str()) : Qel::HashConstCharPtr();
    }

    void refresh() override { files = onDisk.empty() ? files : onDisk; }

    std::size_t indexOf(char const *file) const
    {
        auto const place =
            std::find_if(files.begin(), files.end(), [&](auto const &entry) { return entry.first == file; });
        return static_cast<std::size_t>(place - files.begin());
    }

    Files files;
    Files onDisk; // what refresh() finds, if it is not empty
    int countClaimed = 0;
    bool answersNo = false;
    bool loads = true;
    std::function<std::uint32_t(std::string const &)> sizeOf; // instead of the true size
    std::function<unsigned int(std::string const &)> claims;  // what readFile() says it has delivered
    int finds = 0;
    int reads = 0;

protected:
    bool load() override { return loads; }
    void unload() override {}
};

} // namespace test
