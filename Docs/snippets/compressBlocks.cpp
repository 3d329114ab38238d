#include "System/Graphics/image/s3tc.h"

#include <vector>

int main()
{
    unsigned int const side = 64;
    std::vector<unsigned int> pixels(side * side); // alpha, red, green, blue from the top byte down
    for (unsigned int i = 0; i < pixels.size(); ++i) {
        pixels[i] = i % side * 4 << 24 | i / side * 4 << 16 | i % side * 2 << 8;
    }

    Qel::cS3TC coder;
    std::vector<unsigned short> blocks(pixels.size() / 16 * 8); // 16 bytes for each 4 x 4 pixels
    unsigned int format = 0;
    coder.to_S3TC2or3vs4or5(blocks.data(), pixels.data(), side * 4, side, side, &format);

    std::vector<unsigned int> back(pixels.size());
    if (format == 4) {
        coder.from_S3TC4or5(back.data(), blocks.data(), side, side);
    } else {
        coder.from_S3TC2or3(back.data(), blocks.data(), side, side);
    }
    return format == 4 && back[6] >> 24 == 24 ? 0 : 1; // a slope of alpha is what DXT5 is for
}
