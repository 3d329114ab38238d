#include "System/File/archive.h"
#include "System/File/archiveContainer.h"
#include "System/File/fileInfo.h"

#include "Support/PoolHeap/poolBlk.h"

#include <cstdio>

// Called once the plugins are loaded, which bring the types "FILESYSTEM" and "ZIP".
void mount(Qel::cArchiveContainer &files)
{
    Qel::cArchiveContainer::refreshExternals("loose"); // first: it wins over what is mounted after it
    files.addArchive("base.zip", "ZIP");
    files.addArchive("patch.zip", "ZIP");                             // wins over base.zip
    Qel::cArchiveContainer::addCommonArchive("shared", "FILESYSTEM"); // comes first in every container
}

bool printSize(Qel::cArchiveContainer &files, char const *name)
{
    PoolBlk data;
    Qel::FileInfo info;
    if (!files._findResourceData(name, data, 0x228FC766, &info)) {
        return false;
    }
    std::printf("%s: %u bytes, from %s\n", info.name, data.size(), info.archive->getName().c_str());
    return true;
}

int main()
{
    Qel::cArchiveContainer files;
    mount(files);
    return printSize(files, "Textures\\Stone.TGA") ? 0 : 1;
}
