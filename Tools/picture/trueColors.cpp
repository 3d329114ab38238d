#include "Tools/picture/trueColors.h"

using namespace Qel;

namespace {

ePixelFormat meantFormat(cImage const &image, std::string const &kind)
{
    ePixelFormat const format = image.getPixelFormat().getFormat();
    if (kind == "PCX" && format == R8G8B8) {
        return B8G8R8;
    }
    if (kind == "TGA") {
        switch (format) {
        case B5G6R5:
            return X1R5G5B5;
        case B8G8R8:
            return R8G8B8;
        case X8B8G8R8:
        case A8B8G8R8:
            return image.hasAlpha() ? A8R8G8B8 : X8R8G8B8;
        default:
            break;
        }
    }
    return format;
}

} // namespace

cImage trueColors(cImage const &image, std::string const &kind)
{
    cImage meant;
    if (meant.setCanvas(A8R8G8B8, image.getWidth(), image.getHeight(), nullptr) == 0) {
        return meant;
    }
    if (image.getPixelFormat().getFormat() == PAL8) {
        image.getImage(A8R8G8B8, meant.getData());
        return meant;
    }
    unsigned const pixels = unsigned{image.getWidth()} * image.getHeight();
    cPixelFormat::convertStream(A8R8G8B8, meant.getData(), 4 * pixels, meantFormat(image, kind),
                                image.getData(), image.getBytesPerPixel() * pixels);
    return meant;
}
