#include "Tests/Graphics/image/plainImage.h"

#include "System/math/math.h"

#include <algorithm>
#include <cstring>

using namespace Qel;

namespace plain {

namespace {

unsigned pack(unsigned value, unsigned mask, unsigned shift, unsigned numBits)
{
    return ((value >> ((8 - numBits) & 31)) << (shift & 31)) & mask;
}

unsigned unpack(unsigned pixel, unsigned mask, unsigned shift, unsigned numBits)
{
    return ((pixel & mask) >> (shift & 31)) << ((8 - numBits) & 31);
}

// Red, green, blue, alpha.
void unpack(cPixelFormat const &format, unsigned pixel, unsigned (&channels)[4])
{
    channels[0] = unpack(pixel, format.getRedMask(), format.getRedShift(), format.getRedNumBits());
    channels[1] = unpack(pixel, format.getGreenMask(), format.getGreenShift(), format.getGreenNumBits());
    channels[2] = unpack(pixel, format.getBlueMask(), format.getBlueShift(), format.getBlueNumBits());
    channels[3] = unpack(pixel, format.getAlphaMask(), format.getAlphaShift(), format.getAlphaNumBits());
    channels[3] = format.getAlphaMask() == 0 ? 255 : channels[3];
}

unsigned pack(cPixelFormat const &format, unsigned const (&channels)[4])
{
    return pack(channels[0], format.getRedMask(), format.getRedShift(), format.getRedNumBits()) |
           pack(channels[1], format.getGreenMask(), format.getGreenShift(), format.getGreenNumBits()) |
           pack(channels[2], format.getBlueMask(), format.getBlueShift(), format.getBlueNumBits()) |
           pack(channels[3], format.getAlphaMask(), format.getAlphaShift(), format.getAlphaNumBits());
}

void swapPixels(cImage &image, unsigned x1, unsigned y1, unsigned x2, unsigned y2)
{
    unsigned const first = image.getPixel(x1, y1);
    image.setPixel(x1, y1, image.getPixel(x2, y2));
    image.setPixel(x2, y2, first);
}

} // namespace

void convert(cPixelFormat const &to, unsigned char *dst, cPixelFormat const &from, unsigned char const *src,
             std::size_t pixels)
{
    for (; pixels != 0; --pixels) {
        unsigned pixel = 0;
        std::memcpy(&pixel, src, from.getBytePerPixel());
        unsigned channels[4];
        unpack(from, pixel, channels);
        pixel = pack(to, channels);
        std::memcpy(dst, &pixel, to.getBytePerPixel());
        src += from.getBytePerPixel();
        dst += to.getBytePerPixel();
    }
}

void filter(cImage &image, short const (*kernel)[5])
{
    cImage const source(image);
    cPixelFormat const &format = image.getPixelFormat();
    int divisor = 0;
    for (int i = 0; i < 25; ++i) {
        divisor += kernel[i / 5][i % 5];
    }
    for (int y = 0; y < image.getHeight(); ++y) {
        for (int x = 0; x < image.getWidth(); ++x) {
            int sums[4] = {};
            for (int dy = -2; dy <= 2; ++dy) {
                for (int dx = -2; dx <= 2; ++dx) {
                    int const weight = kernel[dy + 2][dx + 2];
                    if (weight != 0 && y + dy >= 0 && y + dy <= image.getHeight() - 2 && x + dx >= 0 &&
                        x + dx <= image.getWidth() - 2) {
                        unsigned channels[4];
                        unpack(format, source.getPixel(unsigned(x + dx), unsigned(y + dy)), channels);
                        for (int i = 0; i < 4; ++i) {
                            sums[i] += weight * int(channels[i]);
                        }
                    }
                }
            }
            unsigned channels[4];
            for (int i = 0; i < 4; ++i) {
                channels[i] = unsigned(std::clamp(sums[i] / divisor, 0, 255));
            }
            image.setPixel(unsigned(x), unsigned(y), pack(format, channels));
        }
    }
}

void grayscale(cImage &image)
{
    for (unsigned y = 0; y < image.getHeight(); ++y) {
        for (unsigned x = 0; x < image.getWidth(); ++x) {
            unsigned channels[4];
            unpack(image.getPixelFormat(), image.getPixel(x, y), channels);
            channels[0] = channels[1] = channels[2] = (channels[0] + channels[1] + channels[2]) / 3;
            image.setPixel(x, y, pack(image.getPixelFormat(), channels));
        }
    }
}

void mirrorHorizontal(cImage &image)
{
    for (unsigned y = 0; y < image.getHeight(); ++y) {
        for (unsigned x = 0; x < image.getWidth() / 2u; ++x) {
            swapPixels(image, x, y, image.getWidth() - 1u - x, y);
        }
    }
}

void mirrorVertical(cImage &image)
{
    for (unsigned y = 0; y < image.getHeight() / 2u; ++y) {
        for (unsigned x = 0; x < image.getWidth(); ++x) {
            swapPixels(image, x, y, x, image.getHeight() - 1u - y);
        }
    }
}

void bumpmap(cImage const &image, cImage &target, int mode)
{
    int const width = image.getWidth();
    int const height = image.getHeight();
    target.setCanvas(R8G8B8, image.getWidth(), image.getHeight(), nullptr);
    auto const v = [&](int x, int y) {
        unsigned const pixel =
            image.getPixel(unsigned(x + width) % unsigned(width), unsigned(y + height) % unsigned(height));
        return int(image.getPixelFormat().getRedBits(pixel));
    };
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            float nx = float(v(x - 1, y - 1) + 2 * v(x - 1, y) + v(x - 1, y + 1) - v(x + 1, y - 1) -
                             2 * v(x + 1, y) - v(x + 1, y + 1)) /
                       255;
            float ny = float(v(x - 1, y + 1) + 2 * v(x, y + 1) + v(x + 1, y + 1) - v(x - 1, y - 1) -
                             2 * v(x, y - 1) - v(x + 1, y - 1)) /
                       255;
            float const l = 1 / cMath::sqrt(1 + nx * nx + ny * ny);
            nx *= l;
            ny *= l;
            unsigned const first = mode == 0 ? unsigned((nx + 1) * 127.5f) : unsigned(int(nx * 127)) & 255;
            unsigned const second = mode == 0 ? unsigned((ny + 1) * 127.5f) : unsigned(int(ny * 127)) & 255;
            unsigned const third = mode == 0 ? unsigned((l + 1) * 127.5f) : 0;
            target.setPixel(unsigned(x), unsigned(y), first | second << 8 | third << 16);
        }
    }
}

} // namespace plain
