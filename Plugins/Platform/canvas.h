#pragma once

#include "System/Platform/win32Font.h"

#include <SDL.h>

#include <string_view>
#include <vector>

struct Colour {
    Uint8 red, green, blue;
};

namespace palette {

constexpr Colour background{0x26, 0x2a, 0x31};
constexpr Colour field{0x1a, 0x1d, 0x22};
constexpr Colour edge{0x4a, 0x51, 0x5c};
constexpr Colour accent{0x3d, 0x7e, 0xc9};
constexpr Colour focus{0x8f, 0xc1, 0xf5};
constexpr Colour text{0xe8, 0xea, 0xed};
constexpr Colour quiet{0xa3, 0xab, 0xb6};
constexpr Colour alarm{0xf2, 0x8b, 0x82};

} // namespace palette

/// What the dialogs draw on: rectangles and one font, into a surface of 32 bits a pixel. Nothing is drawn
/// outside it.
class Canvas {
public:
    Canvas(SDL_Surface &surface, Qel::Win32Font &font) : m_surface(surface), m_font(font) {}

    void fill(SDL_Rect const &area, Colour colour);
    void frame(SDL_Rect const &area, Colour colour, int thickness = 1); ///< along its inner edge
    void text(int x, int y, std::string_view words, Colour colour);     ///< from the left top corner
    void textCentred(SDL_Rect const &area, std::string_view words, Colour colour);
    void textRight(int x, int y, std::string_view words, Colour colour); ///< ends before @p x

    int lineHeight() const { return m_font.getHeight(); }

private:
    int drawCharacter(int character, int x, int y, Colour colour);

    SDL_Surface &m_surface;
    Qel::Win32Font &m_font;
    std::vector<unsigned char> m_cell; // of one character, as the font draws it
};

int textWidth(Qel::Win32Font const &font, std::string_view words); ///< pixels
