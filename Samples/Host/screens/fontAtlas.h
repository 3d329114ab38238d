#pragma once

#include "System/Graphics/image/image.h"

#include <array>

namespace Qel {
class Win32Font;
}

/// The first 256 characters of a font in one image, made once, for text that is drawn in quads.
class FontAtlas {
public:
    struct Glyph {
        int left = 0, top = 0;       ///< in the image, pixels
        int width = 0;               ///< of the cell in the image; all are as high as the font
        int before = 0, advance = 0; ///< from the pen to the cell, and to the next pen
    };

    /// @param font  valid
    explicit FontAtlas(Qel::Win32Font &font);

    Qel::cImage const &image() const { return m_image; } ///< A8R8G8B8, white with alpha
    int height() const { return m_height; }              ///< of a line

    /// @return that of "?" for what is beyond the atlas
    Glyph const &glyph(char32_t character) const;

private:
    Qel::cImage m_image;
    int m_height;
    std::array<Glyph, 256> m_glyphs;
};
