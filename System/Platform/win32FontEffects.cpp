#include "System/Platform/win32Font.h"

#include "System/Platform/win32FontCanvas.h"

#include <algorithm>

namespace Qel {

// Backwards, so that a shadow never casts another one.
void Win32Font::applyDropShadowToTexture(Canvas const &canvas, int coveredWidth, int coveredHeight) const
{
    for (int row = coveredHeight - 1; row >= m_shadow; --row) {
        for (int column = coveredWidth - 1; column >= m_shadow; --column) {
            unsigned char *const pixel = canvas.at(column, row);
            unsigned char const *const source = canvas.at(column - m_shadow, row - m_shadow);
            if (pixel != nullptr && source != nullptr && pixel[3] == 0) {
                pixel[0] = pixel[1] = pixel[2] = 0;
                pixel[3] = source[3];
            }
        }
    }
}

// An outline is black, so it never gets one itself.
void Win32Font::applyOutlineToTexture(Canvas const &canvas, int coveredWidth, int coveredHeight) const
{
    auto const isWhite = [&](int column, int row) {
        unsigned char const *const pixel = canvas.at(column, row);
        return pixel != nullptr && pixel[0] != 0 && pixel[1] != 0 && pixel[2] != 0 && pixel[3] != 0;
    };
    auto const touches = [&](int column, int row) {
        for (int y = std::max(row - m_outline, 0); y <= std::min(row + m_outline, coveredHeight - 1); ++y) {
            for (int x = std::max(column - m_outline, 0); x <= std::min(column + m_outline, coveredWidth - 1);
                 ++x) {
                if ((x != column || y != row) && isWhite(x, y)) {
                    return true;
                }
            }
        }
        return false;
    };
    for (int row = 0; row < coveredHeight; ++row) {
        for (int column = 0; column < coveredWidth; ++column) {
            unsigned char *const pixel = canvas.at(column, row);
            if (pixel != nullptr && pixel[3] == 0 && touches(column, row)) {
                pixel[0] = pixel[1] = pixel[2] = 0;
                pixel[3] = 255;
            }
        }
    }
}

// The whole buffer, wherever the cell is.
void Win32Font::applyGaussianBlurToTexture(Canvas const &canvas) const
{
    if (m_blurKernel.empty()) {
        return;
    }
    // The kernel is that of create(); a glow works with a radius of its own.
    int const radius = std::min(m_blurRadius, static_cast<int>(m_blurKernel.size() / 2));
    int const width = canvas.width;
    int const height = canvas.height;
    std::vector<float> source(canvas.numPixels());
    std::vector<bool> isBlack(static_cast<std::size_t>(height), true);
    for (std::size_t i = 0; i < source.size(); ++i) {
        unsigned char const value = canvas.pixels[4 * i];
        source[i] = static_cast<float>(value);
        if (value != 0) {
            isBlack[i / static_cast<std::size_t>(width)] = false;
        }
    }
    // The pixels of a row side by side; the sum of each still goes through its window in order.
    std::vector<float> sums(static_cast<std::size_t>(width));
    unsigned char *to = canvas.pixels;
    for (int py = 0; py < height; ++py) {
        std::fill(sums.begin(), sums.end(), 0.0f);
        for (int row = std::max(py - radius, 0); row <= std::min(py + radius, height - 1); ++row) {
            if (isBlack[static_cast<std::size_t>(row)]) {
                continue; // adds nothing
            }
            float const *const from = source.data() + static_cast<std::ptrdiff_t>(row) * width;
            for (int away = -std::min(radius, width - 1); away <= std::min(radius, width - 1); ++away) {
                float const weight = m_blurKernel[static_cast<std::size_t>(radius + away)] *
                                     m_blurKernel[static_cast<std::size_t>(radius + row - py)];
                int const end = std::min(width, width - away);
                for (int px = std::max(0, -away); px < end; ++px) {
                    sums[static_cast<std::size_t>(px)] += weight * from[px + away];
                }
            }
        }
        for (float const sum : sums) {
            to[0] = to[1] = to[2] = static_cast<unsigned char>(std::min(sum, 255.0f));
            to[3] = 255;
            to += 4;
        }
    }
}

void Win32Font::applyScanlineEffectToTexture(Canvas const &canvas) const
{
    if (m_scanlinePeriod <= 1) {
        return;
    }
    for (int row = 0; row < canvas.height - std::max(canvas.y, 0); ++row) {
        if (row % m_scanlinePeriod == 0) {
            continue;
        }
        canvas.forRun(row, [](unsigned char *pixel) {
            for (int channel = 0; channel < 3; ++channel) {
                pixel[channel] = static_cast<unsigned char>(static_cast<float>(pixel[channel]) * 0.7f);
            }
        });
    }
}

void Win32Font::applyRotaryEffectToTexture(Canvas const &canvas) const
{
    canvas.forRun(canvas.height / 2, [](unsigned char *pixel) {
        pixel[0] = pixel[1] = pixel[2] = 127;
        pixel[3] = 255;
    });
}

} // namespace Qel
