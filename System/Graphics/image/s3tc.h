#pragma once

#include "System/System/export.h"

#include <cstdint>

namespace Qel {

/// The block formats of cS3TC. The number after the name is that of the published formats.
enum eS3TC : std::uint32_t {
    S3TC_RGB555 = 0,             ///< DXT1
    S3TC_RGBA5551 = 1,           ///< DXT1 with one bit of alpha
    S3TC_MAPPED_ALPHA = 2,       ///< DXT2 and DXT3: four bits of alpha a pixel
    S3TC_INTERPOLATED_ALPHA = 3, ///< DXT4 and DXT5: alpha between two values a block
};

/// Compresses 32-bit images to blocks of 4 x 4 pixels, and back.
///
/// Pixels are A8R8G8B8: alpha in the highest byte, blue in the lowest. Blocks lie in row order, 8 bytes for
/// DXT1 and 16 for the others; the layouts are the published ones of S3's patent US 5 956 431.
///
/// The encoders search exhaustively among a few end colours in quantised space, so that an image gives the
/// same blocks and the same error everywhere, at every processor level (Support/OS/processorLevel.h).
///
/// @par Threads  An object holds nothing: any number of threads may use one, each on images of its own.
///
/// @code
/// cS3TC coder;
/// std::vector<unsigned char> blocks(width / 4 * (height / 4) * 8);
/// unsigned int const error = coder.to_S3TC1(blocks.data(), pixels, width * 4, width, height);
/// @endcode
class QEL_API cS3TC {
public:
    cS3TC();

    /// A format's name for people; for a value of 4 or more a text that says so.
    char const *getS3TC_name(eS3TC format) const;

    /// @name Encoders
    /// @param dest    the blocks, width / 4 * (height / 4) of them
    /// @param src     the image; its rows are @p pitch bytes apart
    /// @param pitch   bytes from row to row
    /// @param width   pixels; what goes beyond a multiple of 4 is left out
    /// @param height  pixels, 4 or more
    /// @return the total error: the sum over all blocks of the distances in quantised colours, and of what
    ///         each form adds for alpha, modulo 2^32. 0, with nothing written, for a size that is refused and
    ///         for a null pointer
    /// @{

    /// DXT1; alpha is ignored. Refuses where @p pitch, @p width or @p height is no multiple of 4.
    unsigned int to_S3TC1(void *dest, void const *src, unsigned int pitch, unsigned int width,
                          unsigned int height);

    /// DXT1 with one bit of alpha, bit 31 of the pixel. Refuses as to_S3TC1(). In a block that is not opaque
    /// each opaque pixel adds 127 to the error.
    unsigned int to_S3TC1a(void *dest, void const *src, unsigned int pitch, unsigned int width,
                           unsigned int height);

    unsigned int to_S3TC2or3(void *dest, void const *src, unsigned int pitch, unsigned int width,
                             unsigned int height); ///< four bits of alpha a pixel
    unsigned int to_S3TC4or5(void *dest, void const *src, unsigned int pitch, unsigned int width,
                             unsigned int height); ///< interpolated alpha

    /// Takes the better of the two forms for the whole image.
    /// @param format  receives 2 or 4
    unsigned int to_S3TC2or3vs4or5(void *dest, void const *src, unsigned int pitch, unsigned int width,
                                   unsigned int height, unsigned int *format);
    /// @}

    /// @name Decoders
    /// @param dest  the pixels, rows @p width apart; width / 4 * (height / 4) whole blocks are written,
    /// pixels
    ///              beyond them stay as they are
    /// @param src   as many blocks
    /// A width or height below 4 or a null pointer does nothing.
    /// @{
    void from_S3TC1(unsigned int *dest, unsigned short const *src, unsigned int width, unsigned int height);
    void from_S3TC2or3(unsigned int *dest, unsigned short const *src, unsigned int width,
                       unsigned int height);
    void from_S3TC4or5(unsigned int *dest, unsigned short const *src, unsigned int width,
                       unsigned int height);
    /// @}
};

} // namespace Qel
