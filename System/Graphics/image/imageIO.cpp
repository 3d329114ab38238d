#include "System/Graphics/image/imageIO.h"

#include "System/File/fileDisk.h"
#include "System/File/fileTempMem.h"
#include "System/Graphics/image/image.h"
#include "System/System/string.h"

namespace Qel {

iImageIO::~iImageIO() = default;

bool iImageIO::loadEx(String const &path, cImage &image, unsigned int flags)
{
    cFileTempMem file;
    return file.open(path.c_str()) && load(file, image, flags);
}

bool iImageIO::saveEx(String const &path, cImage &image, unsigned int flags)
{
    constexpr unsigned int roomForHeads = 100;
    cFileTempMem file;
    file.reserve(image.getBytesPerPixel() * image.getWidth() * image.getHeight() + roomForHeads);
    if (!save(file, image, flags)) {
        return false;
    }
    cFileDisk disk;
    if (!disk.open(path.c_str(), OPEN_READWRITE)) {
        return false;
    }
    bool const isWritten = disk.write(file.getData(), file.size()) == file.size();
    return disk.close() && isWritten;
}

} // namespace Qel
