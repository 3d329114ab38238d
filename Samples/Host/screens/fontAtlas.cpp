#include "fontAtlas.h"

#include "System/Platform/win32Font.h"

#include <algorithm>
#include <vector>

namespace {

constexpr int imageWidth = 512;
constexpr int gap = 1; // so that no glyph shows its neighbour

bool isDrawn(int character)
{
    return (character > 32 && character < 127) || character > 160;
}

} // namespace

FontAtlas::FontAtlas(Qel::Win32Font &font) : m_height(font.getHeight())
{
    int x = 0;
    int y = 0;
    for (int character = 32; character < static_cast<int>(m_glyphs.size()); ++character) {
        int a = 0;
        int b = 0;
        int c = 0;
        font.getCharABCWidths(character, a, b, c);
        int const width = isDrawn(character) ? std::max(b, 0) : 0;
        if (x + width > imageWidth) {
            x = 0;
            y += m_height + gap;
        }
        m_glyphs[static_cast<std::size_t>(character)] = {x, y, width, a, a + b + c};
        x += width + gap;
    }
    auto const imageHeight = static_cast<unsigned short>(y + m_height);
    m_image.setCanvas(Qel::A8R8G8B8, imageWidth, imageHeight, nullptr);
    std::vector<unsigned char> cell;
    for (std::size_t i = 0; m_image.getData() != nullptr && i < m_glyphs.size(); ++i) {
        Glyph const &glyph = m_glyphs[i];
        if (glyph.width == 0) {
            continue;
        }
        std::size_t const row = static_cast<std::size_t>(glyph.width) * 4;
        cell.assign(row * static_cast<std::size_t>(m_height), 0);
        font.getCharRGBA(static_cast<int>(i), 0, 0, glyph.width, m_height, cell.data());
        for (int line = 0; line < m_height; ++line) {
            std::copy_n(cell.data() + static_cast<std::size_t>(line) * row, row,
                        m_image.getData() +
                            static_cast<std::size_t>((glyph.top + line) * imageWidth + glyph.left) * 4);
        }
    }
}

FontAtlas::Glyph const &FontAtlas::glyph(char32_t character) const
{
    return m_glyphs[character < m_glyphs.size() ? character : U'?'];
}
