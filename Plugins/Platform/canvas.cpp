#include "canvas.h"

#include <algorithm>

namespace {

int advance(Qel::Win32Font const &font, int character)
{
    int a;
    int b;
    int c;
    font.getCharABCWidths(character, a, b, c);
    return a + b + c;
}

Uint8 mix(Uint8 from, Uint8 to, int alpha)
{
    return static_cast<Uint8>(from + (to - from) * alpha / 255);
}

} // namespace

int textWidth(Qel::Win32Font const &font, std::string_view words)
{
    int width = 0;
    for (char const letter : words) {
        width += advance(font, static_cast<unsigned char>(letter));
    }
    return width;
}

void Canvas::fill(SDL_Rect const &area, Colour colour)
{
    SDL_FillRect(&m_surface, &area, SDL_MapRGB(m_surface.format, colour.red, colour.green, colour.blue));
}

void Canvas::frame(SDL_Rect const &area, Colour colour, int thickness)
{
    fill({area.x, area.y, area.w, thickness}, colour);
    fill({area.x, area.y + area.h - thickness, area.w, thickness}, colour);
    fill({area.x, area.y, thickness, area.h}, colour);
    fill({area.x + area.w - thickness, area.y, thickness, area.h}, colour);
}

void Canvas::text(int x, int y, std::string_view words, Colour colour)
{
    for (char const letter : words) {
        x += drawCharacter(static_cast<unsigned char>(letter), x, y, colour);
    }
}

void Canvas::textCentred(SDL_Rect const &area, std::string_view words, Colour colour)
{
    text(area.x + (area.w - textWidth(m_font, words)) / 2, area.y + (area.h - lineHeight()) / 2, words,
         colour);
}

void Canvas::textRight(int x, int y, std::string_view words, Colour colour)
{
    text(x - textWidth(m_font, words), y, words, colour);
}

int Canvas::drawCharacter(int character, int x, int y, Colour colour)
{
    int a;
    int b;
    int c;
    m_font.getCharABCWidths(character, a, b, c);
    constexpr int margin = 2; // antialiasing may reach beyond the black part
    int const width = std::max(b, 0) + margin;
    int const height = m_font.getHeight();
    m_cell.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4, 0);
    m_font.getCharRGBA(character, 0, 0, width, height, m_cell.data());

    for (int row = std::max(0, -y); row < std::min(height, m_surface.h - y); ++row) {
        auto *const line = static_cast<Uint8 *>(m_surface.pixels) + (y + row) * m_surface.pitch;
        unsigned char const *const from = m_cell.data() + static_cast<std::ptrdiff_t>(row) * width * 4;
        int const left = x + a;
        for (int column = std::max(0, -left); column < std::min(width, m_surface.w - left); ++column) {
            if (int const alpha = from[column * 4 + 3]; alpha != 0) {
                Uint8 *const to = line + (left + column) * 4;
                to[0] = mix(to[0], colour.blue, alpha);
                to[1] = mix(to[1], colour.green, alpha);
                to[2] = mix(to[2], colour.red, alpha);
            }
        }
    }
    return a + b + c;
}
