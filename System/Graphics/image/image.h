#pragma once

#include "System/Graphics/image/palette.h"
#include "System/Graphics/image/pixelFormat.h"
#include "System/System/color.h"
#include "System/System/export.h"

#include <cstdint>

namespace Qel {

/// The ready kernels of cImage::applyFilter().
enum eImageFilter : std::uint32_t {
    IMAGEFILTER_BLUR = 1,    ///< a wide bell
    IMAGEFILTER_SOFTEN = 2,  ///< a small bell of 3 x 3
    IMAGEFILTER_AVERAGE = 3, ///< all 25 alike
    IMAGEFILTER_SHARPEN = 4, ///< small bell taken away
    IMAGEFILTER_SHARPEN_MORE = 5,
    IMAGEFILTER_EDGES = 6,
    IMAGEFILTER_CORNERS = 7, ///< the mean of the four corners
    IMAGEFILTER_MOTION = 8,  ///< along the row
    IMAGEFILTER_BELOW = 9,   ///< the pixel with its three neighbours left, right and below
};

/// What cImage::applyAction() can do.
enum eImageCommand : std::uint32_t {
    IMAGECOMMAND_GRAYSCALE = 0,
};

/// A picture in memory: pixels, their format, and a palette for PAL8.
///
/// A pixel takes bits per pixel / 8 bytes, little-endian; pixel (x, y) begins (pitch * y + x) pixels into
/// the data. Rows run from the top.
///
/// @code
/// cImage icon;
/// icon.setCanvas(A8R8G8B8, 64, 64, nullptr); // all zero
/// icon.setPixel(3, 3, 0xFFFF0000);
/// @endcode
///
/// @par Ownership  Owns its pixels; a copy has its own.
/// @par Limits     Sides up to 65535, 1 GiB in all.
class QEL_API cImage {
public:
    static constexpr unsigned int maxBytes = 1u << 30; ///< of one canvas

    cImage() = default; ///< A8R8G8B8, no pixels, all sizes 0
    ~cImage();

    /// Copies format, sizes, palette and pixels. If there is no memory only the palette arrives.
    /// @{
    cImage(cImage const &other);
    cImage &operator=(cImage const &other);
    /// @}

    unsigned char *getData() { return data; }             ///< the pixels, or null
    unsigned char const *getData() const { return data; } ///< the pixels, or null
    float *getDataFP() const;                             ///< the pixels if the format is FLOAT, else null
    unsigned short getWidth() const { return width; }     ///< pixels of a row in use
    unsigned short getHeight() const { return height; }   ///< rows
    unsigned short getPitch() const { return pitch; }     ///< pixels from row to row
    int getBitsPerPixel() const { return m_format.getBPP(); }
    unsigned int getBytesPerPixel() const { return m_format.getBytePerPixel(); }
    void getPixelFormat(cPixelFormat &format) const { format = m_format; }
    cPixelFormat const &getPixelFormat() const { return m_format; }
    void getPalette(cPalette &destination) const { destination = palette; }
    cPalette const &getPalette() const { return palette; }
    void setPalette(cPalette const &source) { palette = source; }

    /// Gives the image new pixels, all zero; the old ones are freed first.
    /// @param newPalette  copied; null: the palette stays
    /// @return the size in bytes. 0 above maxBytes, for a pitch below the width and without memory:
    ///         getData() is then null and everything else stays. Also 0 for an image of no bytes, which is
    ///         made all the same
    unsigned int setCanvas(cPixelFormat const &format, unsigned short newWidth, unsigned short newHeight,
                           cPalette const *newPalette);

    /// The same with rows that are @p newPitch pixels apart, of which @p newWidth are in use.
    unsigned int setCanvas(cPixelFormat const &format, unsigned short newWidth, unsigned short newHeight,
                           unsigned short newPitch, cPalette const *newPalette);

    /// Zeroes the first width * height pixels of the data, whatever the pitch is.
    void clrCanvas();

    /// Stores a pixel that is already in the image's format, for formats other than PAL8 and FLOAT. Nothing
    /// outside the image.
    void setPixel(unsigned int x, unsigned int y, Color color);

    /// Stores an index, in a PAL8 image. Nothing outside the image.
    void setPixelPal(unsigned int x, unsigned int y, int index);

    /// @return a pixel as it lies in memory; 0 outside the image
    unsigned int getPixel(unsigned int x, unsigned int y) const;

    /// Converts the pixels to another format. Indices of an 8-bit image go through the palette, byte 0 as
    /// red; the entry (0, 255, 0) is the key of transparency and gets alpha 0.
    /// @param buffer  room for the result, packed; null to learn the size alone
    /// @return bytes of the result; 0, with nothing written, where they are 4 GiB or more
    unsigned int getImage(cPixelFormat const &format, unsigned char *buffer) const;

    /// Becomes the source's pixels in another format; both formats are taken by their names.
    /// @return width * height; 0 without memory or if @p source has no pixels
    unsigned int setImage(cPixelFormat const &format, cImage const &source);

    bool mirrorVertical(); ///< top becomes bottom. @return false without pixels or memory
    bool
    mirrorHorizontal(); ///< left becomes right. @return false without pixels or for more than 4 bytes each

    /// Cuts the image down to a rectangle. A negative size reaches to the left or up from the corner.
    /// @return false without pixels, for an empty rectangle or one that does not lie inside; nothing is
    ///         changed then
    bool crop(int x, int y, int w, int h);

    /// Finds the pixels with any bit of alpha; nothing is cut.
    /// @param x,y  smallest column and row
    /// @param w,h  largest less smallest: 0 for a single pixel
    /// @return false, with all four 0, if the format has no alpha
    bool cropAlphaBox(int &x, int &y, int &w, int &h) const;

    bool hasAlpha() const; ///< whether any pixel has a bit of alpha set

    /// Makes a normal map of the red channel; the image is taken to repeat in both directions.
    /// @param target  becomes R8G8B8 of this image's size; may not be this image
    /// @param mode    0: x, y, z as 0 .. 255 around 127.5, in this order in memory. 1: x and y as signed
    /// bytes
    ///                of 127 for 1, and 0
    /// @return false for a PAL8 image, another mode, without pixels or memory
    bool bumpmap(cImage &target, int mode) const;

    /// Weighs each pixel's neighbours and divides by the kernel's sum. What lies outside counts as black, and
    /// so do the last row and column.
    /// @return false for PAL8 and FLOAT, without pixels or memory, for a value outside 1 to 9 and for weights
    ///         that sum to 0; nothing is changed then
    /// @{
    bool applyFilter(eImageFilter filter);
    bool applyFilter(short const kernel[5][5]); ///< rows from the top; row 2 column 2 is the centre
    /// @}

    /// @return false for an unknown command, PAL8, FLOAT and without pixels
    bool applyAction(eImageCommand command);

    /// Copies a rectangle of another image of the same format, cut to what both hold.
    /// @return false if this image has no size, the formats differ, or a corner lies outside its image;
    ///         nothing is changed then
    bool copyPart(cImage const &source, unsigned short srcX, unsigned short srcY, unsigned short w,
                  unsigned short h, unsigned short dstX, unsigned short dstY);

private:
    bool allocdata(unsigned int size);
    bool filterBytes(short const kernel[5][5], int divisor);
    bool filterPixels(short const kernel[5][5], int divisor);
    bool hasMasks() const ///< pixels there are, and of a format with channels
    {
        return data != nullptr && m_format.getFormat() != PAL8 && m_format.getFormat() != FLOAT;
    }
    unsigned char *pixelAt(unsigned int x, unsigned int y) const;

    cPixelFormat m_format{A8R8G8B8};
    cPalette palette;
    unsigned char *data = nullptr;
    unsigned short width = 0;
    unsigned short height = 0;
    unsigned short pitch = 0;
};

} // namespace Qel
