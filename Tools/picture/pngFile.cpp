#include "Tools/picture/pngFile.h"

#include <png.h>

#include <cstdio>

bool writePng(std::string const &path, Qel::cImage const &image)
{
    bool isOpaque = true;
    for (unsigned y = 0; y < image.getHeight(); ++y) {
        for (unsigned x = 0; x < image.getWidth(); ++x) {
            isOpaque = isOpaque && image.getPixel(x, y) >> 24 == 255;
        }
    }
    Qel::cImage const plain = [&] {
        Qel::cImage copy;
        copy.setImage(isOpaque ? Qel::R8G8B8 : Qel::A8R8G8B8, image);
        return copy;
    }();
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    png.width = image.getWidth();
    png.height = image.getHeight();
    png.format = isOpaque ? PNG_FORMAT_BGR : PNG_FORMAT_BGRA;
    if (plain.getData() != nullptr &&
        png_image_write_to_file(&png, path.c_str(), 0, plain.getData(), 0, nullptr) != 0) {
        return true;
    }
    std::remove(path.c_str());
    return false;
}
