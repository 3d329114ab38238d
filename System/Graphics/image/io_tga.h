#pragma once

#include "System/Graphics/image/imageIO.h"
#include "System/System/export.h"

#include <cstdint>

namespace Qel {

#pragma pack(push, 1)
/// The head of a TGA file, as it lies there.
struct sHeaderTGA {
    std::uint8_t idLength; ///< bytes that follow the head
    std::uint8_t colorMapType;
    std::uint8_t imageType; ///< 1 palette, 2 true colour, 3 gray, 10 true colour in runs
    std::uint16_t colorMapStart;
    std::uint16_t colorMapLength; ///< entries
    std::uint8_t colorMapBits;    ///< of an entry
    std::uint16_t xOrigin;
    std::uint16_t yOrigin;
    std::uint16_t width;
    std::uint16_t height;
    std::uint8_t bitsPerPixel;
    std::uint8_t descriptor;
};
#pragma pack(pop)
static_assert(sizeof(sHeaderTGA) == 18);

/// "TGA": images with a palette, true colour plain and in runs.
///
/// A file is taken to begin with its bottom row, whatever its origin says, and pixels keep the order of their
/// bytes: 24 bits load as B8G8R8, 32 as A8B8G8R8 (in runs as X8B8G8R8), 16 as B5G6R5. Type 3 is read as 32
/// bits a pixel, its top row first. Other types are refused.
///
/// save() writes an 8-bit image with its palette; any other plain, or in runs where @p flags is 1.
class QEL_API cIO_tga : public iImageIO {
public:
    bool load(cFile &file, cImage &image, unsigned int flags) override; ///< @p flags: not used
    bool save(cFile &file, cImage &image, unsigned int flags) override; ///< @p flags: 1 for runs
    char const *get_type() const override;

private:
    int read_header(cFile &file, sHeaderTGA &header, cPalette *palette);
    int read_type1(cFile &file, cImage &image);
    int read_type2(cFile &file, cImage &image);
    int read_type3(cFile &file, cImage &image);
    int read_type10(cFile &file, cImage &image);
    int write_type1(cFile &file, cImage &image);
    int write_type2(cFile &file, cImage &image);
    int write_type10(cFile &file, cImage &image);
    unsigned int getRLECount(unsigned char const *p, unsigned char const *end, unsigned int size) const;
    unsigned int getRawPixelCount(unsigned char const *p, unsigned char const *end, unsigned int size) const;
};

} // namespace Qel
