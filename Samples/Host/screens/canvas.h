#pragma once

#include "fontAtlas.h"

#include "System/Platform/renderSystem.h"

#include <string_view>
#include <vector>

/// What screens draw on: fills, lines, texts and pictures, handed to a render system in as few batches as
/// their order allows.
class Canvas {
public:
    Canvas(Qel::RenderSystem &renderer, FontAtlas const &font) : m_renderer(renderer), m_font(font) {}

    bool begin();                ///< a frame; false if none can be drawn now
    bool end(Qel::cImage *copy); ///< shows it. @param copy  receives it, or null
    float width() const { return m_width; }
    float height() const { return m_height; }
    float lineHeight() const { return static_cast<float>(m_font.height()); }

    void fill(float x, float y, float w, float h, Qel::Color color);
    void line(float x1, float y1, float x2, float y2, Qel::Color color);

    /// One line of UTF-8 from its left top corner on.
    /// @return where it ends
    float text(float x, float y, std::string_view text, Qel::Color color = 0xFFE8E8E8);
    float textWidth(std::string_view text) const;

    /// A picture as large as it is asked for.
    /// @param id  of nextImageId() for one that does not change; 0 for one that does
    void image(Qel::cImage const &image, float x, float y, float w, float h, std::uint32_t id);

    /// The same, as large as fits without changing its shape, in the middle, no larger than it is.
    void fit(Qel::cImage const &image, float x, float y, float w, float h, std::uint32_t id);

    static std::uint32_t nextImageId(); ///< different each time

private:
    void quad(float x, float y, float w, float h, Qel::Color color, std::array<float, 4> const &part);
    void use(Qel::RenderBatch::Shape shape, Qel::cImage const *texture, std::uint32_t id);
    void flush();

    Qel::RenderSystem &m_renderer;
    FontAtlas const &m_font;
    std::uint32_t const m_fontId = nextImageId();
    float m_width = 0;
    float m_height = 0;
    Qel::RenderBatch m_batch;
    std::vector<Qel::RenderVertex> m_vertices;
};
