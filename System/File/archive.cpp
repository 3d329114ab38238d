#include "System/File/archive.h"

#include "System/File/archiveContainer.h"
#include "System/File/fileInfo.h"

namespace Qel {

iArchive::iArchive(char const *archiveName)
{
    setName(archiveName);
}

iArchive::~iArchive()
{
    cArchiveContainer::_forgetArchive(*this);
}

String iArchive::getComment() const
{
    return String();
}

bool iArchive::isReadOnly() const
{
    return true;
}

std::int64_t iArchive::getModTime()
{
    return 0;
}

cFile *iArchive::openFile(HashConstCharPtr const &)
{
    return nullptr;
}

void iArchive::closeFile(cFile *)
{
}

bool iArchive::getFileInfo(int index, FileInfo *info)
{
    HashConstCharPtr const file = getFile(index);
    return file.text != nullptr && findFile(file.text, info, file.hash);
}

unsigned int iArchive::writeFile(char const *, void const *, unsigned int)
{
    return 0;
}

bool iArchive::removeFile(char const *)
{
    return false;
}

bool iArchive::renameFile(char const *, char const *)
{
    return false;
}

bool iArchive::createFolder(char const *)
{
    return false;
}

bool iArchive::removeFolder(char const *)
{
    return false;
}

unsigned int iArchive::listFolder(char const *, StringVector &)
{
    return 0;
}

std::int64_t iArchive::getFileTime(HashConstCharPtr const &)
{
    return 0;
}

bool iArchive::setFileTime(char const *, std::int64_t)
{
    return false;
}

} // namespace Qel
