#pragma once

#include "System/Graphics/image/imageIO.h"
#include "System/System/export.h"

#include <cstdint>

namespace Qel {

/// The head of a PCX file, as it lies there.
struct sHeaderPCX {
    std::uint8_t manufacturer; ///< 10
    std::uint8_t version;      ///< 5
    std::uint8_t encoding;     ///< 1: runs
    std::uint8_t bitsPerPlane; ///< 8
    std::int16_t xMin;
    std::int16_t yMin;
    std::int16_t xMax; ///< inclusive
    std::int16_t yMax; ///< inclusive
    std::uint16_t xResolution;
    std::uint16_t yResolution;
    std::uint8_t palette16[48];
    std::uint8_t reserved;
    std::uint8_t planes;       ///< 1 or 3
    std::int16_t bytesPerLine; ///< of one plane
    std::uint8_t rest[60];
};
static_assert(sizeof(sHeaderPCX) == 128);

/// "PCX": 8 bits with a palette and 24 bits, in runs.
///
/// The palette is the last 768 bytes of the stream, also for 24 bits. The first of three planes becomes the
/// lowest byte of a pixel. A stream that ends early leaves the rest of the image zero.
///
/// save() writes an 8-bit image with its palette, and any other as 24 bits.
class QEL_API cIO_pcx : public iImageIO {
public:
    bool load(cFile &file, cImage &image, unsigned int flags) override; ///< @p flags: not used
    bool save(cFile &file, cImage &image, unsigned int flags) override; ///< @p flags: not used
    char const *get_type() const override;

private:
    int read_header(cFile &file, sHeaderPCX &header, cPalette *palette);
    int read_8bpp(cFile &file, cImage &image);
    int read_24bpp(cFile &file, cImage &image);
    int write_bitmap(cFile &file, cImage &image);
    int pcx_encode_byte(unsigned char value, unsigned char count, cFile &file);
    int pcx_encode_line(unsigned char *line, int length, cFile &file);
    int pcx_encode_line24(unsigned char *line, int length, int plane, cFile &file);
};

} // namespace Qel
