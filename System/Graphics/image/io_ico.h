#pragma once

#include "System/Graphics/image/imageIO.h"
#include "System/System/export.h"

#include <cstdint>
#include <vector>

namespace Qel {

/// The head of an ICO file's directory, as it lies there.
struct sHeaderICO_dir {
    std::uint16_t reserved; ///< 0
    std::uint16_t type;     ///< 1 icon, 2 cursor
    std::uint16_t count;    ///< entries that follow
};
static_assert(sizeof(sHeaderICO_dir) == 6);

/// One picture of the directory. Only the offset is used: the picture has a head of its own.
struct sHeaderICO_dirEntry {
    std::uint8_t width;
    std::uint8_t height;
    std::uint8_t colors;
    std::uint8_t reserved;
    std::uint16_t planes;
    std::uint16_t bitCount;
    std::uint32_t imageSize;
    std::uint32_t offset; ///< from the start of the stream
};
static_assert(sizeof(sHeaderICO_dirEntry) == 16);

/// "ICO": icons and cursors of 4 and 8 bits, read as PAL8; the mask is passed over. There is no writer.
class QEL_API cIO_ico : public iImageIO {
public:
    /// @param flags  which picture of the directory, from 0
    bool load(cFile &file, cImage &image, unsigned int flags) override;
    bool save(cFile &file, cImage &image, unsigned int flags) override; ///< @return false, always
    char const *get_type() const override;

private:
    int read_header(cFile &file, sHeaderICO_dir &header, std::vector<sHeaderICO_dirEntry> &entries);
};

} // namespace Qel
