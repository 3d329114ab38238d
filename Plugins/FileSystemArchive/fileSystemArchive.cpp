#include "fileSystemArchive.h"

#include "System/File/archiveIndex.h"
#include "System/File/diskName.h"
#include "System/File/fileInfo.h"
#include "System/System/logManager.h"

#include "Support/OS/rootedFolder.h"

#include <cstring>
#include <string>
#include <utility>

using Qel::ArchiveIndex;
using Qel::FileInfo;
using Qel::HashConstCharPtr;
using Qel::String;

namespace {

constexpr std::uint64_t tooLong = std::uint64_t{1} << 32;

void report(String const &text)
{
    Qel::logMessage(text, 3);
}

} // namespace

/// What the archive shows, from one reading of the folder to the next. Never changes: a thread that reads
/// keeps the one it began with.
struct FileSystemArchive::View {
    os::RootedFolder folder;
    ArchiveIndex index;
    std::string paths; // as they are spelled on the disk; an entry's place is an offset

    char const *pathOf(std::size_t at) const { return paths.data() + index[at].place; }
};

FileSystemArchive::FileSystemArchive(char const *folderName) : iArchive(folderName)
{
}

FileSystemArchive::~FileSystemArchive() = default;

std::shared_ptr<FileSystemArchive::View const> FileSystemArchive::view() const
{
    std::lock_guard const hold(m_lock);
    return m_view;
}

void FileSystemArchive::setView(std::shared_ptr<View const> view)
{
    std::lock_guard const hold(m_lock);
    m_view.swap(view);
}

std::shared_ptr<FileSystemArchive::View const> FileSystemArchive::makeView() const
{
    auto fresh = std::make_shared<View>();
    String const path = Qel::findDiskName(getName());
    if (path.empty() || !fresh->folder.open(path)) {
        report("FILESYSTEM '" + getName() + "': there is no such folder\n");
        return nullptr;
    }
    for (os::RootedFolder::File const &file : fresh->folder.list()) {
        if (file.size >= tooLong) {
            report(path + "/" + file.path + ": left out, 4 GiB or longer\n");
            continue;
        }
        ArchiveIndex::Entry entry;
        entry.size = static_cast<std::uint32_t>(file.size);
        entry.packedSize = entry.size;
        entry.modTime = file.modTime;
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

bool FileSystemArchive::load()
{
    std::shared_ptr<View const> fresh = makeView();
    bool const there = fresh != nullptr;
    setView(std::move(fresh));
    return there;
}

void FileSystemArchive::unload()
{
    setView(nullptr);
}

void FileSystemArchive::refresh()
{
    setView(makeView());
}

bool FileSystemArchive::exists(HashConstCharPtr const &file)
{
    return findFile(file.text, nullptr, file.hash);
}

bool FileSystemArchive::findFile(char const *fileName, FileInfo *info, unsigned int hash)
{
    auto const shown = view();
    std::size_t const at = shown ? shown->index.find({fileName, hash}) : ArchiveIndex::npos;
    std::uint64_t bytes = 0;
    std::int64_t modTime = 0;
    if (at == ArchiveIndex::npos || !shown->folder.stat(shown->pathOf(at), bytes, modTime) ||
        bytes >= tooLong) {
        return false;
    }
    if (info != nullptr) {
        shown->index.fill(at, *this, *info);
        info->size = static_cast<std::uint32_t>(bytes);
        info->packedSize = info->size;
        info->modTime = modTime;
    }
    return true;
}

unsigned int FileSystemArchive::readFile(FileInfo *info, void *buffer, unsigned int room, unsigned int)
{
    auto const shown = view();
    std::size_t const at = shown && info != nullptr ? shown->index.find(*info) : ArchiveIndex::npos;
    return at == ArchiveIndex::npos
               ? 0
               : static_cast<unsigned int>(shown->folder.read(shown->pathOf(at), buffer, room));
}

unsigned int FileSystemArchive::listFolder(char const *folder, Qel::StringVector &out)
{
    auto const shown = view();
    return shown ? shown->index.listFolder(folder, out) : 0;
}

std::int64_t FileSystemArchive::getFileTime(HashConstCharPtr const &file)
{
    FileInfo info;
    return findFile(file.text, &info, file.hash) ? info.modTime : 0;
}

int FileSystemArchive::getNumFiles()
{
    auto const shown = view();
    return shown ? static_cast<int>(shown->index.size()) : 0;
}

HashConstCharPtr FileSystemArchive::getFile(int index)
{
    auto const shown = view();
    return shown ? shown->index.file(index) : HashConstCharPtr();
}
