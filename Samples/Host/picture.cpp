#include "picture.h"

#include <png.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

Picture::Picture(int width, int height)
    : m_width(width), m_height(height),
      m_pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3, 0xFF)
{
}

void Picture::line(float x1, float y1, float x2, float y2, float width, Ink ink)
{
    float const reach = width / 2 + 1;
    float const left = std::min(x1, x2) - reach;
    float const right = std::max(x1, x2) + reach;
    float const top = std::min(y1, y2) - reach;
    float const bottom = std::max(y1, y2) + reach;
    auto const w = static_cast<float>(m_width);
    auto const h = static_cast<float>(m_height);
    if (!(right > 0 && left < w && bottom > 0 && top < h)) { // also if it is no number
        return;
    }
    float const dx = x2 - x1;
    float const dy = y2 - y1;
    float const length = dx * dx + dy * dy;
    auto const lastX = static_cast<int>(std::min(right, w - 1));
    auto const lastY = static_cast<int>(std::min(bottom, h - 1));
    for (int y = static_cast<int>(std::max(top, 0.0f)); y <= lastY; ++y) {
        for (int x = static_cast<int>(std::max(left, 0.0f)); x <= lastX; ++x) {
            float const px = static_cast<float>(x) - x1;
            float const py = static_cast<float>(y) - y1;
            float const along = length > 0 ? std::clamp((px * dx + py * dy) / length, 0.0f, 1.0f) : 0;
            float const distance = std::hypot(px - along * dx, py - along * dy);
            float const cover = std::clamp(reach - 0.5f - distance, 0.0f, 1.0f);
            std::uint8_t *const pixel = &m_pixels[static_cast<std::size_t>(y * m_width + x) * 3];
            for (std::size_t i = 0; i < ink.size(); ++i) {
                auto const before = static_cast<float>(pixel[i]);
                pixel[i] = static_cast<std::uint8_t>(before + (static_cast<float>(ink[i]) - before) * cover);
            }
        }
    }
}

bool Picture::save(std::string const &path) const
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(m_width);
    image.height = static_cast<png_uint_32>(m_height);
    image.format = PNG_FORMAT_RGB;
    return png_image_write_to_file(&image, path.c_str(), 0, m_pixels.data(), 0, nullptr) != 0;
}
