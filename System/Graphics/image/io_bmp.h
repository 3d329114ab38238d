#pragma once

#include "System/Graphics/image/imageIO.h"
#include "System/System/export.h"

#include <cstdint>

namespace Qel {

#pragma pack(push, 1)
/// The first head of a BMP file, as it lies there.
struct sHeaderBMPCore {
    std::uint16_t type; ///< "BM"
    std::uint32_t size;
    std::uint16_t reserved1;
    std::uint16_t reserved2;
    std::uint32_t offBits; ///< where the pixels begin, from the start of the stream
};

/// The second one.
struct sHeaderBMPInfo {
    std::uint32_t size;
    std::int32_t width;
    std::int32_t height;
    std::uint16_t planes;
    std::uint16_t bitCount;
    std::uint32_t compression; ///< 0 none, 1 runs of 8 bits, 3 with masks
    std::uint32_t sizeImage;   ///< bytes of all rows
    std::int32_t xResolution;
    std::int32_t yResolution;
    std::uint32_t colorsUsed;
    std::uint32_t colorsImportant;
};
#pragma pack(pop)
static_assert(sizeof(sHeaderBMPCore) == 14 && sizeof(sHeaderBMPInfo) == 40);

/// "BMP": 1, 8, 16, 24 and 32 bits, and 16 and 32 with masks (whose values are taken for the usual ones).
///
/// A row's length in the file is sizeImage / height, so that rows with and without padding are read; where
/// sizeImage is 0 all rows are empty. The last byte of a row of 1 bit a pixel gives no pixels. Heights and
/// widths outside 1 .. 65535 are refused, and so are runs.
///
/// save() writes rows without padding, and a size of 54 in the head.
class QEL_API cIO_bmp : public iImageIO {
public:
    /// @return true also for a bit count that has no reader: the image is then as it was
    bool load(cFile &file, cImage &image, unsigned int flags) override; ///< @p flags: not used
    bool save(cFile &file, cImage &image, unsigned int flags) override; ///< @p flags: not used
    char const *get_type() const override;

private:
    int read_header(cFile &file, sHeaderBMPCore &core, sHeaderBMPInfo &info);
    bool read_type_rgb(cFile &file, cImage &image);
    bool read_type_bw(cFile &file, cImage &image, sHeaderBMPCore const &core, sHeaderBMPInfo const &info);
    bool read_type_bf(cFile &file, cImage &image);
    bool read_type_rle8(cFile &file, cImage &image);
    bool save_type_rgb(cFile &file, cImage &image);
    bool save_type_bw(cFile &file, cImage &image);
    bool save_type_rle8(cFile &file, cImage &image);
};

} // namespace Qel
