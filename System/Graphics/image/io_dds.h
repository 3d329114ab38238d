#pragma once

#include "System/Graphics/image/imageIO.h"
#include "System/System/export.h"

#include <cstdint>

namespace Qel {

/// What cIO_dds works with while it loads.
struct cIO_ddsInfo {
    std::uint32_t height = 0;
    std::uint32_t width = 0;
    std::uint32_t format = 0;      ///< as cIO_dds::decodePixelFormat() gives it
    bool hasMipLevels = false;     ///< told, and looked at by nobody
    unsigned char *data = nullptr; ///< the blocks, as many as width and height ask for
};

/// "DDS": DXT1 to DXT5 and plain 32 bits, read as A8R8G8B8; the top level alone. There is no writer.
///
/// Blocks that the stream does not hold are zero. Where the head tells no linear size, rows are read as its
/// bits per pixel say, each to a place of one byte a pixel; what a row has beyond that is passed over.
class QEL_API cIO_dds : public iImageIO {
public:
    bool load(cFile &file, cImage &image, unsigned int flags) override; ///< @p flags: not used
    bool save(cFile &file, cImage &image, unsigned int flags) override; ///< @return false, always
    char const *get_type() const override;

private:
    /// "DXT1" to "DXT5" give 1 to 5, 0 gives 0 for plain pixels, all else 6.
    void decodePixelFormat(unsigned int fourCC, unsigned int &format);
    bool decompress(cIO_ddsInfo const &info, cImage &image);
};

} // namespace Qel
