#include "System/File/fileMem.h"
#include "System/Graphics/image/image.h"
#include "System/Graphics/image/io_bmp.h"
#include "System/Graphics/image/io_tga.h"

#include <vector>

int main()
{
    // A TGA of one pixel: head, then blue, green, red.
    unsigned char const bytes[] = {0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 1, 0, 24, 0, 10, 20, 30};
    Qel::cFileMem file(sizeof bytes, bytes);
    Qel::cImage image;
    if (!Qel::cIO_tga().load(file, image, 0)) { // loadEx() takes a path
        return 1;
    }
    image.applyFilter(Qel::IMAGEFILTER_SOFTEN); // sizes of one pixel have nothing but a border: black

    // For the screen: as many bytes as getImage() says without a buffer.
    Qel::cPixelFormat const screen(Qel::R5G6B5);
    std::vector<unsigned char> pixels(image.getImage(screen, nullptr));
    image.getImage(screen, pixels.data());

    Qel::cFileMem out;
    return Qel::cIO_bmp().save(out, image, 0) && out.size() == 54 + 3 ? 0 : 1;
}
