#pragma once

#include "System/Graphics/image/image.h"

#include <cstdint>
#include <vector>

namespace Qel {
class ParticleSystem;
}

/// A picture that particles are drawn into by the processor: soft discs and streaks, in tiles side by side.
class ParticlePicture {
public:
    static constexpr int tileWidth = 360;
    static constexpr int tileHeight = 270;

    ParticlePicture(int columns, int rows);

    /// Draws a system into a tile; x goes right, y up, and the ground is a line.
    /// @param left, up  where the system's owner is
    void draw(int column, int row, Qel::ParticleSystem const &system, float left, float up);

    Qel::cImage image() const; ///< A8R8G8B8

private:
    struct Tile {
        int left, top;
    };
    void disc(Tile const &tile, float x, float y, float radius, std::uint32_t colour, bool isIntense);
    void blend(int x, int y, std::uint32_t colour, float share, bool isIntense);

    int m_width;
    int m_height;
    std::vector<float> m_pixels; // red, green, blue from 0 to 1
};
