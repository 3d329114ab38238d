#include "System/File/fileInfo.h"

#include "Support/OS/clock.h"

#include <cstring>

namespace Qel {

void FileInfo::reset()
{
    // The name whole, so that no copy of the record carries bytes that nobody wrote.
    std::memset(name, 0, sizeof name);
    packedSize = 0;
    size = 0;
    modTime = 0;
    reserved[0] = 0;
    reserved[1] = 0;
    handle = 0;
    archive = nullptr;
}

void FileInfo::setName(char const *text)
{
    std::size_t const length = text == nullptr ? 0 : strnlen(text, sizeof name - 1);
    if (length > 0) {
        std::memcpy(name, text, length);
    }
    std::memset(name + length, 0, sizeof name - length);
}

bool FileInfo::getModDate(unsigned short, unsigned char, unsigned char)
{
    return modTime != 0 && os::hasLocalTime(modTime);
}

} // namespace Qel
