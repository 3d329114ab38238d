#include "picture.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

Picture::Picture(int width, int height, Ink paper)
{
    m_image.setCanvas(Qel::A8R8G8B8, static_cast<unsigned short>(width), static_cast<unsigned short>(height),
                      nullptr);
    unsigned char *pixel = m_image.getData();
    for (int i = pixel == nullptr ? 0 : width * height; i > 0; --i, pixel += 4) {
        pixel[0] = paper[2];
        pixel[1] = paper[1];
        pixel[2] = paper[0];
        pixel[3] = 255;
    }
}

void Picture::line(float x1, float y1, float x2, float y2, float width, Ink ink)
{
    float const reach = width / 2 + 1;
    float const left = std::min(x1, x2) - reach;
    float const right = std::max(x1, x2) + reach;
    float const top = std::min(y1, y2) - reach;
    float const bottom = std::max(y1, y2) + reach;
    int const imageWidth = m_image.getWidth();
    auto const w = static_cast<float>(imageWidth);
    auto const h = static_cast<float>(m_image.getHeight());
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
            std::uint8_t *const pixel = m_image.getData() + static_cast<std::size_t>(y * imageWidth + x) * 4;
            for (std::size_t i = 0; i < ink.size(); ++i) {
                std::uint8_t &channel = pixel[2 - i];
                auto const before = static_cast<float>(channel);
                channel = static_cast<std::uint8_t>(before + (static_cast<float>(ink[i]) - before) * cover);
            }
        }
    }
}
