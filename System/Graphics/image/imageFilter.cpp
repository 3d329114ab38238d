#include "System/Graphics/image/image.h"

#include "System/math/math.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace Qel {

namespace {

using Kernel = short[5][5];

constexpr Kernel kernels[] = {
    {{0, 1, 2, 1, 0}, {1, 3, 10, 3, 1}, {2, 10, 90, 10, 2}, {1, 3, 10, 3, 1}, {0, 1, 2, 1, 0}},
    {{0, 0, 0, 0, 0}, {0, 1, 3, 1, 0}, {0, 3, 9, 3, 0}, {0, 1, 3, 1, 0}, {0, 0, 0, 0, 0}},
    {{1, 1, 1, 1, 1}, {1, 1, 1, 1, 1}, {1, 1, 1, 1, 1}, {1, 1, 1, 1, 1}, {1, 1, 1, 1, 1}},
    {{0, 0, 0, 0, 0}, {0, -1, -3, -1, 0}, {0, -3, 41, -3, 0}, {0, -1, -3, -1, 0}, {0, 0, 0, 0, 0}},
    {{-1, -1, -1, -1, -1},
     {-1, -1, -1, -1, -1},
     {-1, -1, 49, -1, -1},
     {-1, -1, -1, -1, -1},
     {-1, -1, -1, -1, -1}},
    {{0, 0, 0, 0, 0}, {0, 1, -2, 1, 0}, {0, -2, 5, -2, 0}, {0, 1, -2, 1, 0}, {0, 0, 0, 0, 0}},
    {{1, 0, 0, 0, 1}, {0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}, {1, 0, 0, 0, 1}},
    {{0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}, {1, 2, 3, 2, 1}, {0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}},
    {{0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}, {0, 0, 1, 0, 0}, {0, 1, 1, 1, 0}, {0, 0, 0, 0, 0}},
};

unsigned int clampToByte(int value)
{
    return static_cast<unsigned int>(std::clamp(value, 0, 255));
}

} // namespace

bool cImage::bumpmap(cImage &target, int mode) const
{
    if (m_format.getFormat() == PAL8 || mode < 0 || mode > 1 || data == nullptr || &target == this ||
        target.setCanvas(R8G8B8, width, height, nullptr) == 0) {
        return false;
    }
    for (unsigned int y = 0; y < height; ++y) {
        unsigned int const above = (y + height - 1u) % height;
        unsigned int const below = (y + 1) % height;
        for (unsigned int x = 0; x < width; ++x) {
            unsigned int const left = (x + width - 1u) % width;
            unsigned int const right = (x + 1) % width;
            auto const v = [&](unsigned int column, unsigned int row) {
                return static_cast<int>(m_format.getRedBits(getPixel(column, row)));
            };
            float nx = static_cast<float>(v(left, above) + 2 * v(left, y) + v(left, below) - v(right, above) -
                                          2 * v(right, y) - v(right, below)) /
                       255;
            float ny = static_cast<float>(v(left, below) + 2 * v(x, below) + v(right, below) -
                                          v(left, above) - 2 * v(x, above) - v(right, above)) /
                       255;
            float const l = 1 / cMath::sqrt(1 + nx * nx + ny * ny);
            nx *= l;
            ny *= l;
            unsigned char *const to = target.pixelAt(x, y);
            if (mode == 0) {
                to[0] = static_cast<unsigned char>((nx + 1) * 127.5f);
                to[1] = static_cast<unsigned char>((ny + 1) * 127.5f);
                to[2] = static_cast<unsigned char>((l + 1) * 127.5f);
            } else {
                to[0] = static_cast<unsigned char>(static_cast<signed char>(nx * 127));
                to[1] = static_cast<unsigned char>(static_cast<signed char>(ny * 127));
            }
        }
    }
    return true;
}

bool cImage::applyFilter(eImageFilter filter)
{
    return filter >= 1 && filter <= std::size(kernels) && applyFilter(kernels[filter - 1]);
}

bool cImage::applyFilter(short const kernel[5][5])
{
    int divisor = 0;
    for (int i = 0; i < 25; ++i) {
        divisor += kernel[i / 5][i % 5];
    }
    if (!hasMasks() || divisor == 0) {
        return false;
    }
    cImage const source(*this);
    if (source.data == nullptr) {
        return false;
    }
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            int red = 0;
            int green = 0;
            int blue = 0;
            int alpha = 0;
            for (int dy = -2; dy <= 2; ++dy) {
                for (int dx = -2; dx <= 2; ++dx) {
                    int const weight = kernel[dy + 2][dx + 2];
                    if (weight == 0 || y + dy < 0 || y + dy > height - 2 || x + dx < 0 ||
                        x + dx > width - 2) {
                        continue;
                    }
                    unsigned int const pixel =
                        source.getPixel(static_cast<unsigned int>(x + dx), static_cast<unsigned int>(y + dy));
                    red += weight * static_cast<int>(m_format.getRedBits(pixel));
                    green += weight * static_cast<int>(m_format.getGreenBits(pixel));
                    blue += weight * static_cast<int>(m_format.getBlueBits(pixel));
                    alpha += weight * static_cast<int>(m_format.getAlphaBits(pixel));
                }
            }
            setPixel(static_cast<unsigned int>(x), static_cast<unsigned int>(y),
                     m_format.buildPixel(clampToByte(red / divisor), clampToByte(green / divisor),
                                         clampToByte(blue / divisor), clampToByte(alpha / divisor)));
        }
    }
    return true;
}

bool cImage::applyAction(eImageCommand command)
{
    if (command != IMAGECOMMAND_GRAYSCALE || !hasMasks()) {
        return false;
    }
    for (unsigned int y = 0; y < height; ++y) {
        for (unsigned int x = 0; x < width; ++x) {
            unsigned int const pixel = getPixel(x, y);
            unsigned int const gray =
                (m_format.getRedBits(pixel) + m_format.getGreenBits(pixel) + m_format.getBlueBits(pixel)) / 3;
            setPixel(x, y, m_format.buildPixel(gray, gray, gray, m_format.getAlphaBits(pixel)));
        }
    }
    return true;
}

} // namespace Qel
