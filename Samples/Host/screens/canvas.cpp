#include "canvas.h"

#include "System/System/string.h"
#include "System/System/wString.h"

#include <algorithm>
#include <cmath>

bool Canvas::begin()
{
    int width = 0;
    int height = 0;
    if (!m_renderer.beginFrame(width, height)) {
        return false;
    }
    m_width = static_cast<float>(width);
    m_height = static_cast<float>(height);
    return true;
}

bool Canvas::end(Qel::cImage *copy)
{
    flush();
    return m_renderer.endFrame(copy);
}

std::uint32_t Canvas::nextImageId()
{
    static std::uint32_t last = 0;
    return ++last;
}

void Canvas::flush()
{
    m_batch.vertices = m_vertices.data();
    m_batch.vertexCount = m_vertices.size();
    m_renderer.draw(m_batch);
    m_vertices.clear();
}

void Canvas::use(Qel::RenderBatch::Shape shape, Qel::cImage const *texture, std::uint32_t id)
{
    if (shape == m_batch.shape && texture == m_batch.texture && id == m_batch.textureId) {
        return;
    }
    flush();
    m_batch.shape = shape;
    m_batch.texture = texture;
    m_batch.textureId = id;
}

void Canvas::quad(float x, float y, float w, float h, Qel::Color color, std::array<float, 4> const &part)
{
    auto const [left, top, right, bottom] = part;
    m_vertices.insert(m_vertices.end(), {{x, y, left, top, color},
                                         {x + w, y, right, top, color},
                                         {x + w, y + h, right, bottom, color},
                                         {x, y + h, left, bottom, color}});
}

void Canvas::fill(float x, float y, float w, float h, Qel::Color color)
{
    use(Qel::RenderBatch::QUADS, nullptr, 0);
    quad(x, y, w, h, color, {});
}

void Canvas::line(float x1, float y1, float x2, float y2, Qel::Color color)
{
    use(Qel::RenderBatch::LINES, nullptr, 0);
    m_vertices.insert(m_vertices.end(), {{x1, y1, 0, 0, color}, {x2, y2, 0, 0, color}});
}

void Canvas::image(Qel::cImage const &image, float x, float y, float w, float h, std::uint32_t id)
{
    use(Qel::RenderBatch::QUADS, &image, id);
    quad(x, y, w, h, 0xFFFFFFFF, {0, 0, 1, 1});
    if (id == 0) {
        use(Qel::RenderBatch::QUADS, nullptr, 0); // before the image changes
    }
}

void Canvas::fit(Qel::cImage const &image, float x, float y, float w, float h, std::uint32_t id)
{
    auto const width = static_cast<float>(image.getWidth());
    auto const height = static_cast<float>(image.getHeight());
    if (width == 0 || height == 0) {
        return;
    }
    float const scale = std::min({w / width, h / height, 1.0f});
    this->image(image, std::round(x + (w - width * scale) / 2), std::round(y + (h - height * scale) / 2),
                width * scale, height * scale, id);
}

float Canvas::text(float x, float y, std::string_view text, Qel::Color color)
{
    use(Qel::RenderBatch::QUADS, &m_font.image(), m_fontId);
    auto const imageWidth = static_cast<float>(m_font.image().getWidth());
    auto const imageHeight = static_cast<float>(m_font.image().getHeight());
    Qel::WString wide;
    wide.toString(Qel::String(text));
    for (wchar_t const character : wide) {
        FontAtlas::Glyph const &glyph = m_font.glyph(static_cast<char32_t>(character));
        auto const left = static_cast<float>(glyph.left);
        auto const top = static_cast<float>(glyph.top);
        auto const width = static_cast<float>(glyph.width);
        if (glyph.width != 0) {
            quad(x + static_cast<float>(glyph.before), y, width, lineHeight(), color,
                 {left / imageWidth, top / imageHeight, (left + width) / imageWidth,
                  (top + lineHeight()) / imageHeight});
        }
        x += static_cast<float>(glyph.advance);
    }
    return x;
}

float Canvas::textWidth(std::string_view text) const
{
    Qel::WString wide;
    wide.toString(Qel::String(text));
    float width = 0;
    for (wchar_t const character : wide) {
        width += static_cast<float>(m_font.glyph(static_cast<char32_t>(character)).advance);
    }
    return width;
}
