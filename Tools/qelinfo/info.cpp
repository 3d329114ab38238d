#include "info.h"

#include "System/File/fileMem.h"
#include "System/Graphics/image/image.h"
#include "System/System/string.h"
#include "Tools/picture/fileKind.h"
#include "Tools/picture/pngFile.h"
#include "Tools/picture/trueColors.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <string_view>

using namespace Qel;

namespace {

char const *const formatNames[] = {"X1R5G5B5",    "R5G6B5",   "R8G8B8",   "X8R8G8B8", "A1R5G5B5", "A1R4G4B4",
                                   "A8R8G8B8P24", "A8R8G8B8", "X1B5G5R5", "B5G6R5",   "B8G8R8",   "X8B8G8R8",
                                   "A8B8G8R8",    "A1B4G4R4", "PAL8",     "FLOAT"};

std::string endingOf(std::string const &path)
{
    std::string ending = std::filesystem::path(path).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return ending.empty() ? ending : ending.substr(1);
}

void line(char const *name, std::string const &text)
{
    std::printf("  %-8s %s\n", name, text.c_str());
}

void describe(cImage const &image)
{
    unsigned const format = image.getPixelFormat().getFormat();
    line("read as", std::to_string(image.getWidth()) + " x " + std::to_string(image.getHeight()) + ", " +
                        formatNames[format] + ", " + std::to_string(image.getBitsPerPixel()) +
                        " bits a pixel");
    if (format != PAL8) {
        line("palette", "none");
        return;
    }
    bool isUsed[cPalette::numEntries] = {};
    for (unsigned y = 0; y < image.getHeight(); ++y) {
        for (unsigned x = 0; x < image.getWidth(); ++x) {
            isUsed[image.getPixel(x, y) & 255] = true;
        }
    }
    line("palette",
         std::to_string(std::count(std::begin(isUsed), std::end(isUsed), true)) + " of 256 entries in use");
}

// Indices keep their palette; other pixels go out in the order that makes the file's colours right.
bool write(std::string const &path, cImage &image, std::string const &kind)
{
    std::string const ending = endingOf(path);
    cImage colors = trueColors(image, kind);
    if (colors.getData() == nullptr) {
        return false;
    }
    if (ending == "PNG") {
        return writePng(path, colors);
    }
    cImage out;
    if (image.getPixelFormat().getFormat() == PAL8) {
        out = image;
    } else if (ending == "PCX") {
        // The writer puts what is called blue into the first plane, which is the red one everywhere else: so
        // the two change their names on the way.
        out.setCanvas(B8G8R8, colors.getWidth(), colors.getHeight(), nullptr);
        colors.getImage(R8G8B8, out.getData());
    } else {
        out.setImage(colors.hasAlpha() ? A8R8G8B8 : R8G8B8, colors);
    }
    std::error_code ignored;
    std::filesystem::remove(path, ignored); // the writer would keep the tail of a longer file
    return out.getData() != nullptr && readerOf(ending)->saveEx(path, out, 0);
}

} // namespace

bool isWritable(std::string const &path)
{
    std::string const ending = endingOf(path);
    return ending == "TGA" || ending == "BMP" || ending == "PCX" || ending == "PNG";
}

ExitCode inform(Options const &options)
{
    cFileMem file;
    if (!file.open(options.file.c_str())) {
        std::fprintf(stderr, "qelinfo: %s: cannot be read\n", options.file.c_str());
        return exitFile;
    }
    FileKind const kind = fileKindOf(
        std::string_view(reinterpret_cast<char const *>(file.getData()), file.size()), options.index);
    std::printf("%s: %s, %u bytes\n", options.file.c_str(),
                kind.name.empty() ? "no picture" : kind.name.c_str(), file.size());
    if (!kind.size.empty()) {
        line("size", kind.size);
    }
    if (!kind.details.empty()) {
        line("head", kind.details);
    }
    std::unique_ptr<iImageIO> const reader = readerOf(kind.name);
    cImage image;
    file.seek(0);
    // A bit count without a reader leaves an image as it was: without pixels, here.
    if (reader == nullptr || !reader->load(file, image, options.index) || image.getData() == nullptr) {
        std::string const why = options.index >= kind.pictures ? "there is no such picture in the file"
                                : kind.isReadable ? "the file is too short, or its sizes are out of bounds"
                                                  : kind.trouble;
        line("reader", "none: " + why);
        return exitRefused;
    }
    line("reader", std::string("cIO_") + (kind.name == "TGA"   ? "tga"
                                          : kind.name == "BMP" ? "bmp"
                                          : kind.name == "PCX" ? "pcx"
                                          : kind.name == "ICO" ? "ico"
                                                               : "dds"));
    describe(image);
    if (!kind.trouble.empty()) {
        line("but", kind.trouble);
    }
    if (options.convert.empty()) {
        return exitDone;
    }
    if (!write(options.convert, image, kind.name)) {
        std::fprintf(stderr, "qelinfo: %s: cannot be written\n", options.convert.c_str());
        return exitFile;
    }
    line("written", options.convert);
    return exitDone;
}
