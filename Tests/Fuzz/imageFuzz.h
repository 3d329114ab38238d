#pragma once

#include "System/File/fileMem.h"
#include "System/Graphics/image/image.h"
#include "System/Graphics/image/io_bmp.h"
#include "System/Graphics/image/io_pcx.h"
#include "System/Graphics/image/io_tga.h"
#include "Tests/Fuzz/fuzzTarget.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

/// Everything that can be seen of an image.
inline std::string contentsOf(Qel::cImage const &image)
{
    std::string seen = std::to_string(image.getWidth()) + ',' + std::to_string(image.getHeight()) + ',' +
                       std::to_string(image.getPitch()) + ',' +
                       std::to_string(image.getPixelFormat().getFormat()) + ':';
    seen.append(reinterpret_cast<char const *>(&image.getPalette()), sizeof(Qel::cPalette));
    if (image.getData() != nullptr) {
        seen.append(reinterpret_cast<char const *>(image.getData()),
                    std::size_t{image.getBytesPerPixel()} * image.getPitch() * image.getHeight());
    }
    return seen;
}

/// Reads any bytes by one format, and writes and reads back by the others what came of them.
/// @param numPictures  values of flags to read with, from 0
template <class Format>
std::string readImage(unsigned char const *data, std::size_t size, unsigned int numPictures = 1)
{
    std::string seen;
    for (unsigned int flags = 0; flags < numPictures; ++flags) {
        Qel::cFileMem file;
        file.set(static_cast<unsigned int>(size), data);
        Qel::cImage image;
        bool const isRead = Format().load(file, image, flags);
        std::string const contents = contentsOf(image);
        std::size_t const bytes =
            std::size_t{image.getBytesPerPixel()} * image.getPitch() * image.getHeight();
        fuzzRequire(bytes <= (1u << 20) + 256 * size, "a canvas is in proportion to the file");
        seen += std::to_string(isRead) + std::to_string(file.tell()) + contents;

        constexpr std::size_t small = 1 << 16;
        if (!isRead || bytes == 0 || bytes > small) {
            continue;
        }
        Qel::cIO_tga tga;
        Qel::cIO_bmp bmp;
        Qel::cIO_pcx pcx;
        struct {
            Qel::iImageIO &format;
            unsigned int flags;
        } const writers[] = {{tga, 0}, {tga, 1}, {bmp, 0}, {pcx, 0}};
        for (auto const &writer : writers) {
            Qel::cFileMem written;
            fuzzRequire(writer.format.save(written, image, writer.flags), "what was read can be written");
            fuzzRequire(contentsOf(image) == contents, "writing leaves an image as it was");
            seen.append(reinterpret_cast<char const *>(written.getData()), written.size());
            written.seek(0);
            Qel::cImage back;
            // A PCX has signed sides, and runs of 16 bits have no reader.
            bool const isReadable = &writer.format == &pcx
                                        ? image.getWidth() <= 0x7FFF && image.getHeight() <= 0x7FFF
                                        : writer.flags == 0 || image.getBitsPerPixel() != 16;
            fuzzRequire(!isReadable || writer.format.load(written, back, 0), "what was written can be read");
            if (isReadable && &writer.format != &pcx && image.getBitsPerPixel() != 16) {
                fuzzRequire(back.getWidth() == image.getWidth() && back.getHeight() == image.getHeight() &&
                                std::memcmp(back.getData(), image.getData(), bytes) == 0,
                            "pixels come back byte for byte");
            }
            seen += contentsOf(back);
        }
    }
    return seen;
}
