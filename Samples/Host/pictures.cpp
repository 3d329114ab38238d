#include "pictures.h"

#include "System/File/fileMem.h"
#include "System/File/fileSystem.h"
#include "System/System/string.h"
#include "System/System/stringVector.h"
#include "Tools/picture/fileKind.h"
#include "Tools/picture/trueColors.h"

#include <algorithm>
#include <chrono>
#include <string_view>

using namespace Qel;

namespace {

constexpr unsigned place = 128; // pixels, of a picture on the sheet
constexpr unsigned gap = 12;
constexpr unsigned columns = 4;

Pictures::Picture readPicture(String const &path, std::size_t folderLength)
{
    Pictures::Picture picture;
    picture.name = path.substr(folderLength + 1);
    cFileMem file;
    if (!file.open(path.c_str())) {
        picture.trouble = "cannot be read";
        return picture;
    }
    FileKind const kind =
        fileKindOf(std::string_view(reinterpret_cast<char const *>(file.getData()), file.size()));
    picture.kind = kind.name;
    std::unique_ptr<iImageIO> const reader = readerOf(kind.name);
    file.seek(0);
    cImage image;
    auto const start = std::chrono::steady_clock::now();
    bool const isRead = reader != nullptr && reader->load(file, image, 0) && image.getData() != nullptr;
    picture.ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    picture.bits = image.getBitsPerPixel();
    if (isRead) {
        picture.image = trueColors(image, kind.name);
    } else {
        picture.trouble = kind.isReadable ? "is damaged" : kind.trouble;
    }
    return picture;
}

// Over a board of light and dark squares.
unsigned blended(unsigned pixel, unsigned x, unsigned y)
{
    constexpr unsigned square = 8;
    unsigned const below = (x / square + y / square) % 2 == 0 ? 200 : 160;
    unsigned const alpha = pixel >> 24;
    unsigned result = 0xFF000000;
    for (unsigned shift = 0; shift < 24; shift += 8) {
        result |= ((pixel >> shift & 255) * alpha + below * (255 - alpha)) / 255 << shift;
    }
    return result;
}

void draw(cImage &sheet, cImage const &image, unsigned left, unsigned top)
{
    unsigned const longest = std::max(image.getWidth(), image.getHeight());
    unsigned const width = std::max(1u, image.getWidth() * place / longest);
    unsigned const height = std::max(1u, image.getHeight() * place / longest);
    for (unsigned y = 0; y < height; ++y) {
        for (unsigned x = 0; x < width; ++x) {
            unsigned const pixel =
                image.getPixel(x * image.getWidth() / width, y * image.getHeight() / height);
            sheet.setPixel(left + (place - width) / 2 + x, top + (place - height) / 2 + y,
                           Color(blended(pixel, x, y)));
        }
    }
}

} // namespace

Pictures::Pictures(std::string const &folder)
{
    if (folder.empty()) {
        return;
    }
    for (char const *const ending : {"*.bmp", "*.dds", "*.ico", "*.pcx", "*.tga"}) {
        StringVector paths;
        FileSystem::getFiles(String(folder) + "/*.*", paths, ending, true);
        for (String const &path : paths) {
            m_pictures.push_back(readPicture(path, folder.size()));
        }
    }
}

std::size_t Pictures::numRead() const
{
    return static_cast<std::size_t>(
        std::count_if(m_pictures.begin(), m_pictures.end(),
                      [](Picture const &picture) { return picture.trouble.empty(); }));
}

cImage Pictures::contactSheet() const
{
    constexpr unsigned most = 1000; // a sheet is as tall as an image may be
    unsigned const shown = static_cast<unsigned>(std::min<std::size_t>(numRead(), most));
    unsigned const rows = (shown + columns - 1) / columns;
    cImage sheet;
    if (sheet.setCanvas(A8R8G8B8, columns * (place + gap) + gap,
                        static_cast<unsigned short>(rows * (place + gap) + gap), nullptr) == 0) {
        return sheet;
    }
    for (unsigned y = 0; y < sheet.getHeight(); ++y) {
        for (unsigned x = 0; x < sheet.getWidth(); ++x) {
            sheet.setPixel(x, y, Color(0xFF30343C));
        }
    }
    unsigned drawn = 0;
    for (Picture const &picture : m_pictures) {
        if (picture.trouble.empty() && drawn < shown) {
            draw(sheet, picture.image, gap + drawn % columns * (place + gap),
                 gap + drawn / columns * (place + gap));
            ++drawn;
        }
    }
    return sheet;
}
