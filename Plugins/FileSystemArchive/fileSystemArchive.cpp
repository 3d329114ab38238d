#include "fileSystemArchive.h"

#include "System/File/diskName.h"
#include "System/System/logManager.h"

#include <utility>

using Qel::ArchiveIndex;
using Qel::FileInfo;
using Qel::String;

namespace {

constexpr std::uint64_t tooLong = std::uint64_t{1} << 32;

void report(String const &text)
{
    Qel::logMessage(text, 3);
}

} // namespace

// The open file, if it is this one.
os::RootedFile FolderContents::take(std::size_t at)
{
    std::lock_guard const hold(lock);
    if (foundAt != at) {
        return {};
    }
    foundAt = ArchiveIndex::npos;
    return std::move(found);
}

FileSystemArchive::FileSystemArchive(char const *folderName) : tIndexedArchive(folderName)
{
}

std::shared_ptr<FolderContents> FileSystemArchive::readContents() const
{
    auto fresh = std::make_shared<FolderContents>();
    String const path = Qel::findDiskName(getName());
    if (path.empty() || !fresh->folder.open(path)) {
        report("FILESYSTEM '" + getName() + "': there is no such folder\n");
        return nullptr;
    }
    for (os::RootedFolder::File const &file : fresh->folder.list()) {
        if (file.status.size >= tooLong) {
            report(path + "/" + file.path + ": left out, 4 GiB or longer\n");
            continue;
        }
        ArchiveIndex::Entry entry;
        entry.size = static_cast<std::uint32_t>(file.status.size);
        entry.packedSize = entry.size;
        entry.modTime = file.status.modTime;
        entry.place = fresh->paths.size();
        // A backslash in a name would separate in a lookup what it does not separate on the disk.
        if (file.path.find('\\') != std::string::npos || !fresh->index.add(file.path.c_str(), entry)) {
            report(path + "/" + file.path + ": left out, its name cannot be looked up\n");
            continue;
        }
        fresh->paths.append(file.path.c_str(), file.path.size() + 1);
    }
    for (ArchiveIndex::Double const &twice : fresh->index.finish()) {
        report(path + "/" + (fresh->paths.data() + twice.dropped.place) + ": left out, '" +
               (fresh->paths.data() + twice.kept.place) + "' differs in case alone and comes first\n");
    }
    return fresh;
}

bool FileSystemArchive::checkEntry(FolderContents &contents, std::size_t at, FileInfo *info)
{
    char const *const path = contents.pathOf(at);
    os::RootedFolder::Status status;
    os::RootedFile file;
    bool const isOpen = info != nullptr && file.open(contents.folder, path, status);
    if ((!isOpen && !contents.folder.stat(path, status)) || status.size >= tooLong) {
        return false;
    }
    if (info != nullptr) {
        info->size = static_cast<std::uint32_t>(status.size);
        info->packedSize = info->size;
        info->modTime = status.modTime;
        std::lock_guard const hold(contents.lock);
        std::swap(contents.found, file);
        contents.foundAt = at;
    }
    return true;
}

unsigned int FileSystemArchive::readEntry(FolderContents &contents, std::size_t at, void *buffer,
                                          unsigned int room)
{
    os::RootedFile file = contents.take(at);
    if (!file.isOpen() && !file.open(contents.folder, contents.pathOf(at))) {
        return 0;
    }
    return static_cast<unsigned int>(file.read(buffer, room));
}
