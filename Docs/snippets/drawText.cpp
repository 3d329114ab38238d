#include "System/Platform/win32Font.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace {

constexpr int side = 64; // of the atlas

/// A glyph's place in the atlas, and how it stands in a line.
struct Glyph {
    int x = 0;
    int before = 0;  // pixels from the pen to the cell; may be negative
    int advance = 0; // to the next pen
};

} // namespace

int main()
{
    Qel::Win32Font font;
    int const flags = Qel::Win32Font::ANTIALIASED | Qel::Win32Font::DROP_SHADOW;
    if (!font.create("DejaVu Sans", 24, 400, 0, 0, flags)) {
        return 1; // not installed: take another family
    }

    // A row of an atlas: blue, green, red, alpha, all zero where no glyph is.
    std::vector<unsigned char> atlas(std::size_t{4} * side * side);
    Glyph glyphs[3];
    int x = 0;
    for (int i = 0; i < 3; ++i) {
        int a;
        int b;
        int c;
        font.getCharABCWidths("Qel"[i], a, b, c);
        if (x + b > side) {
            return 1;
        }
        font.getCharRGBA("Qel"[i], x, 0, side, side, atlas.data());
        glyphs[i] = {x, a, a + b + c};
        x += b + 4; // rows of a glyph end in up to three empty pixels
    }

    // A line of text: each cell begins at the pen plus its a, and the pen goes on by a, b and c.
    int pen = 0;
    for (Glyph const &glyph : glyphs) {
        int const left = pen + glyph.before; // copy the cell from glyph.x to here
        pen += glyph.advance;
        if (left < -2 || pen <= 0) {
            return 1;
        }
    }
    return std::any_of(atlas.begin(), atlas.end(), [](unsigned char byte) { return byte == 255; }) ? 0 : 1;
}
