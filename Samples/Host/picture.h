#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

/// A picture of lines and dots on white, with smooth edges.
class Picture {
public:
    using Ink = std::array<std::uint8_t, 3>; ///< red, green, blue

    Picture(int width, int height);

    /// Draws a line, or a dot where its ends are the same. What lies outside is cut.
    /// @param width  in pixels
    void line(float x1, float y1, float x2, float y2, float width, Ink ink);

    bool save(std::string const &path) const; ///< as a PNG file. @return false if it cannot be written

private:
    int m_width;
    int m_height;
    std::vector<std::uint8_t> m_pixels;
};
