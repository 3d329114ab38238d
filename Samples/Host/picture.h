#pragma once

#include "System/Graphics/image/image.h"

#include <array>
#include <cstdint>

/// A picture of lines and dots, with smooth edges.
class Picture {
public:
    using Ink = std::array<std::uint8_t, 3>; ///< red, green, blue

    Picture(int width, int height, Ink paper = {255, 255, 255});

    /// Draws a line, or a dot where its ends are the same. What lies outside is cut.
    /// @param width  in pixels
    void line(float x1, float y1, float x2, float y2, float width, Ink ink);

    Qel::cImage const &image() const { return m_image; } ///< A8R8G8B8

private:
    Qel::cImage m_image;
};
