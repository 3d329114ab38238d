#pragma once

#include "System/Graphics/image/image.h"

#include <cstddef>

/// What the library does with pixels, written down a pixel at a time. Slow, and there to be compared with.
namespace plain {

void convert(Qel::cPixelFormat const &to, unsigned char *dst, Qel::cPixelFormat const &from,
             unsigned char const *src, std::size_t pixels);
void filter(Qel::cImage &image, short const (*kernel)[5]);
void grayscale(Qel::cImage &image);
void mirrorHorizontal(Qel::cImage &image);
void mirrorVertical(Qel::cImage &image);
void bumpmap(Qel::cImage const &image, Qel::cImage &target, int mode);

} // namespace plain
