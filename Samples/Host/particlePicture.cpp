#include "particlePicture.h"

#include "System/Graphics/particle/particle.h"
#include "System/Graphics/particle/particleEmitter.h"
#include "System/Graphics/particle/particleSystem.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr float pixelsPerUnit = 27;
constexpr float groundFromBottom = 30;

} // namespace

ParticlePicture::ParticlePicture(int columns, int rows)
    : m_width(columns * tileWidth), m_height(rows * tileHeight),
      m_pixels(static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_height) * 3)
{
    for (int y = 0; y < m_height; ++y) {
        float const down = static_cast<float>(y % tileHeight) / tileHeight;
        bool const isEdge = y % tileHeight == 0;
        for (int x = 0; x < m_width; ++x) {
            bool const isLine = isEdge || x % tileWidth == 0;
            float *const pixel =
                &m_pixels[3 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) +
                               static_cast<std::size_t>(x))];
            bool const isGround = (y % tileHeight) > tileHeight - static_cast<int>(groundFromBottom);
            pixel[0] = isLine ? 0.0f : isGround ? 0.10f : 0.05f + 0.05f * down;
            pixel[1] = isLine ? 0.0f : isGround ? 0.09f : 0.06f + 0.06f * down;
            pixel[2] = isLine ? 0.0f : isGround ? 0.08f : 0.10f + 0.08f * down;
        }
    }
}

void ParticlePicture::blend(int x, int y, std::uint32_t colour, float share, bool isIntense)
{
    float *const pixel = &m_pixels[3 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) +
                                        static_cast<std::size_t>(x))];
    float const cover = share * static_cast<float>(colour >> 24) / 255;
    for (unsigned int i = 0; i < 3; ++i) {
        float const light = static_cast<float>(colour >> (16 - 8 * i) & 255) / 255;
        // What glows is added, all else covers.
        pixel[i] = isIntense ? pixel[i] + light * cover : pixel[i] + (light - pixel[i]) * cover;
    }
}

void ParticlePicture::disc(Tile const &tile, float x, float y, float radius, std::uint32_t colour,
                           bool isIntense)
{
    float const reach = std::max(radius, 0.8f);
    int const firstX = std::max(static_cast<int>(x - reach), tile.left + 1);
    int const lastX = std::min(static_cast<int>(x + reach) + 1, tile.left + tileWidth - 1);
    int const firstY = std::max(static_cast<int>(y - reach), tile.top + 1);
    int const lastY = std::min(static_cast<int>(y + reach) + 1, tile.top + tileHeight - 1);
    for (int row = firstY; row <= lastY; ++row) {
        for (int column = firstX; column <= lastX; ++column) {
            float const far = std::hypot(static_cast<float>(column) - x, static_cast<float>(row) - y) / reach;
            if (far < 1) {
                float const soft = (1 - far * far) * (1 - far * far);
                blend(column, row, colour, soft, isIntense);
            }
        }
    }
}

void ParticlePicture::draw(int column, int row, Qel::ParticleSystem const &system, float left, float up)
{
    Tile const tile{column * tileWidth, row * tileHeight};
    float const middle = static_cast<float>(tile.left) + tileWidth / 2.0f;
    float const ground = static_cast<float>(tile.top + tileHeight) - groundFromBottom;
    auto const isSeen = [&](float x, float y) {
        return std::fabs(x - middle) < 2 * tileWidth && std::fabs(y - ground) < 2 * tileHeight;
    };
    for (unsigned int i = 0; i < system.getActiveCount(); ++i) {
        Qel::Particle const &particle = system.getParticles()[i];
        float const x = middle + (particle.position.x + left) * pixelsPerUnit;
        float const y = ground - (particle.position.y + up) * pixelsPerUnit;
        if (!isSeen(x, y)) {
            continue;
        }
        float const radius = particle.size * pixelsPerUnit / 2;
        bool const isIntense = (particle.flags & Qel::Particle::INTENSE) != 0;
        Qel::ParticleEmitter const *const emitter = system.getEmitter(particle.emitterId);
        float const streak = emitter != nullptr && emitter->hasStreaks() ? emitter->getStreakLength() : 0;
        float const alongX = particle.direction.x * streak * pixelsPerUnit;
        float const alongY = -particle.direction.y * streak * pixelsPerUnit;
        int const dots = std::clamp(static_cast<int>(std::hypot(alongX, alongY)), 1, 64);
        for (int dot = 0; dot < dots; ++dot) {
            float const back = static_cast<float>(dot) / static_cast<float>(dots);
            disc(tile, x - alongX * back, y - alongY * back, radius * (1 - 0.6f * back), particle.colour,
                 isIntense);
        }
    }
}

Qel::cImage ParticlePicture::image() const
{
    Qel::cImage image;
    image.setCanvas(Qel::A8R8G8B8, static_cast<unsigned short>(m_width),
                    static_cast<unsigned short>(m_height), nullptr);
    unsigned char *pixel = image.getData();
    auto const byte = [](float light) {
        return static_cast<unsigned char>(std::sqrt(std::clamp(light, 0.0f, 1.0f)) * 255);
    };
    for (std::size_t i = 0; pixel != nullptr && i < m_pixels.size(); i += 3, pixel += 4) {
        pixel[0] = byte(m_pixels[i + 2]);
        pixel[1] = byte(m_pixels[i + 1]);
        pixel[2] = byte(m_pixels[i]);
        pixel[3] = 255;
    }
    return image;
}
