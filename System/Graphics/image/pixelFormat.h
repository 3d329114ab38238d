#pragma once

#include "System/System/export.h"

#include <cstdint>
#include <type_traits>

namespace Qel {

/// How a pixel is packed. The name lists the channels from the highest bit down.
enum ePixelFormat : std::uint32_t {
    X1R5G5B5 = 0,
    R5G6B5 = 1,
    R8G8B8 = 2,
    X8R8G8B8 = 3,
    A1R5G5B5 = 4,
    A1R4G4B4 = 5,    ///< 4 bits a colour, with a spare bit below each
    A8R8G8B8P24 = 6, ///< 24 bits; its alpha mask lies outside the pixel
    A8R8G8B8 = 7,
    X1B5G5R5 = 8,
    B5G6R5 = 9,
    B8G8R8 = 10,
    X8B8G8R8 = 11,
    A8B8G8R8 = 12,
    A1B4G4R4 = 13, ///< 4 bits a colour, with a spare bit below each
    PAL8 = 14,     ///< 8 bits, an index into the image's palette; no masks
    FLOAT = 15,    ///< 24 bits; no masks, and nothing here converts it
};

/// A pixel's layout by bit masks, and conversion between such layouts.
///
/// A channel of n bits is widened to 8 by zeros below and narrowed by dropping low bits: five bits of ones
/// read as 248. A mask of 0 means that the format has no such channel.
///
/// @code
/// cPixelFormat const screen(R5G6B5);
/// unsigned int const orange = screen.buildPixel(255u, 128u, 0u, 255u);
/// @endcode
class QEL_API cPixelFormat {
public:
    /// One of the named formats; a value above 15 gives A8R8G8B8.
    cPixelFormat(ePixelFormat format);

    /// A layout of one's own. getFormat() then says A8R8G8B8, whatever the masks are.
    /// @param bits  bits per pixel
    cPixelFormat(int bits, unsigned int r, unsigned int g, unsigned int b, unsigned int a);

    /// @return false for a value above 15; nothing is changed then
    bool setFormat(ePixelFormat newFormat);

    ePixelFormat getFormat() const { return format; }
    int getBPP() const { return bitsPerPixel; } ///< bits per pixel
    unsigned int getBytePerPixel() const        ///< bits / 8
    {
        return bitsPerPixel > 0 ? static_cast<unsigned int>(bitsPerPixel) / 8 : 0;
    }

    unsigned int getRedMask() const { return redMask; }
    unsigned int getGreenMask() const { return greenMask; }
    unsigned int getBlueMask() const { return blueMask; }
    unsigned int getAlphaMask() const { return alphaMask; }

    /// @name Index of a mask's lowest set bit; 32 for a mask of 0
    /// @{
    unsigned int getRedShift() const { return redShift; }
    unsigned int getGreenShift() const { return greenShift; }
    unsigned int getBlueShift() const { return blueShift; }
    unsigned int getAlphaShift() const { return alphaShift; }
    /// @}

    /// @name Length of the run of set bits that starts there; 0 for a mask of 0
    /// @{
    unsigned int getRedNumBits() const { return redNumBits; }
    unsigned int getGreenNumBits() const { return greenNumBits; }
    unsigned int getBlueNumBits() const { return blueNumBits; }
    unsigned int getAlphaNumBits() const { return alphaNumBits; }
    /// @}

    /// Equal bits per pixel and equal masks; getFormat() does not count.
    bool operator==(cPixelFormat const &other) const;
    bool operator!=(cPixelFormat const &other) const { return !(*this == other); }

    /// Packs a colour of floats: 1.0 gives a channel's whole mask.
    unsigned int buildPixel(float r, float g, float b, float a) const;

    /// Packs a colour of 8-bit values.
    /// @{
    unsigned int buildPixel(unsigned int r, unsigned int g, unsigned int b, unsigned int a) const;
    unsigned int buildPixel(unsigned char r, unsigned char g, unsigned char b, unsigned char a) const
    {
        return buildPixel(unsigned{r}, unsigned{g}, unsigned{b}, unsigned{a});
    }
    /// @}

    /// Plain literals and mixed types: floats if there is a floating-point number among them.
    template <class R, class G, class B, class A>
    requires(std::is_arithmetic_v<R> &&std::is_arithmetic_v<G> &&std::is_arithmetic_v<B>
                 &&std::is_arithmetic_v<A>) unsigned int buildPixel(R r, G g, B b, A a) const
    {
        using Number =
            std::conditional_t<std::is_integral_v<std::common_type_t<R, G, B, A>>, unsigned int, float>;
        return buildPixel(static_cast<Number>(r), static_cast<Number>(g), static_cast<Number>(b),
                          static_cast<Number>(a));
    }

    /// @name One channel of a pixel as an 8-bit value
    /// @{
    unsigned int getRedBits(unsigned int pixel) const { return unpack(pixel, redMask, redShift, redNumBits); }
    unsigned int getGreenBits(unsigned int pixel) const
    {
        return unpack(pixel, greenMask, greenShift, greenNumBits);
    }
    unsigned int getBlueBits(unsigned int pixel) const
    {
        return unpack(pixel, blueMask, blueShift, blueNumBits);
    }
    unsigned int getAlphaBits(unsigned int pixel) const ///< 255 for a format without alpha
    {
        return alphaMask == 0 ? 255 : unpack(pixel, alphaMask, alphaShift, alphaNumBits);
    }
    /// @}

    /// Converts pixels until one side has no whole pixel left. A format without alpha reads as opaque.
    ///
    /// Pixels of two to four bytes are converted in vectors, whatever their masks; others one at a time.
    /// PAL8 and FLOAT have no masks and are not for this.
    /// @param dst  @p dstSize bytes, packed; may be @p src where its pixels are no wider than the source's
    /// @param src  @p srcSize bytes, packed
    /// @return bytes of @p dst that were left unwritten
    static unsigned int convertStream(cPixelFormat const &dstFormat, unsigned char *dst, unsigned int dstSize,
                                      cPixelFormat const &srcFormat, unsigned char const *src,
                                      unsigned int srcSize);

    /// Converts a rectangle of packed pixels without scaling: a channel's bits go over as a number, and alpha
    /// that is missing is 255 cut to the destination's bits.
    /// @param dst  @p width * @p height pixels of @p dstFormat
    /// @param src  as many of @p srcFormat
    /// @return 1; 0 if a pointer is null and nothing was done
    static unsigned int convertStreamFS(cPixelFormat const &dstFormat, unsigned char *dst,
                                        cPixelFormat const &srcFormat, unsigned char const *src,
                                        unsigned int width, unsigned int height);

private:
    void setFormat(int bits, unsigned int r, unsigned int g, unsigned int b, unsigned int a);

    // Counts are taken modulo 32, as the processor's shifts do: a channel of more than 8 bits shifts by a
    // count that wraps.
    static unsigned int unpack(unsigned int pixel, unsigned int mask, unsigned int shift,
                               unsigned int numBits)
    {
        return ((pixel & mask) >> (shift & 31)) << ((8 - numBits) & 31);
    }

    ePixelFormat format = A8R8G8B8;
    std::int32_t bitsPerPixel = 0;
    std::uint32_t redMask = 0;
    std::uint32_t greenMask = 0;
    std::uint32_t blueMask = 0;
    std::uint32_t alphaMask = 0;
    std::uint32_t redShift = 32;
    std::uint32_t greenShift = 32;
    std::uint32_t blueShift = 32;
    std::uint32_t alphaShift = 32;
    std::uint32_t redNumBits = 0;
    std::uint32_t greenNumBits = 0;
    std::uint32_t blueNumBits = 0;
    std::uint32_t alphaNumBits = 0;
};

} // namespace Qel
