#include "fontScreen.h"

#include "style.h"

#include "System/Platform/win32Font.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace {

constexpr std::string_view sample = "Quick Ferry & 42 Zebras";

struct Effect {
    char const *name;
    int blur;
    int scanlines;
    int flags;
    bool glows = false;
};

constexpr Effect effects[] = {
    {"plain", 0, 0, 0},
    {"antialiased", 0, 0, Qel::Win32Font::ANTIALIASED},
    {"italic", 0, 0, Qel::Win32Font::ANTIALIASED | Qel::Win32Font::ITALIC},
    {"underline", 0, 0, Qel::Win32Font::UNDERLINE},
    {"shadow", 0, 0, Qel::Win32Font::ANTIALIASED | Qel::Win32Font::DROP_SHADOW},
    {"outline", 0, 0, Qel::Win32Font::ANTIALIASED | Qel::Win32Font::OUTLINE},
    {"blur", 3, 0, Qel::Win32Font::ANTIALIASED},
    {"scan lines", 0, 3, Qel::Win32Font::ANTIALIASED},
    {"rotary line", 0, 0, Qel::Win32Font::ANTIALIASED | Qel::Win32Font::ROTARY},
    {"glow", 0, 0, Qel::Win32Font::ANTIALIASED, true},
};

// Glyph beside glyph, each in its own cell.
Qel::cImage glyphsOf(Qel::Win32Font &font, bool glows)
{
    int width = 0;
    for (char const character : sample) {
        int a = 0;
        int b = 0;
        int c = 0;
        font.getCharABCWidths(character, a, b, c);
        width += std::max(a, 0) + b + std::max(c, 0);
    }
    Qel::cImage image;
    int const height = font.getHeight();
    if (image.setCanvas(Qel::A8R8G8B8, static_cast<unsigned short>(width),
                        static_cast<unsigned short>(height), nullptr) == 0) {
        return image;
    }
    int pen = 0;
    std::vector<unsigned char> cell;
    for (char const character : sample) {
        int a = 0;
        int b = 0;
        int c = 0;
        font.getCharABCWidths(character, a, b, c);
        pen += std::max(a, 0);
        cell.assign(static_cast<std::size_t>(b) * static_cast<std::size_t>(height) * 4, 0);
        if (glows) {
            font.getGlowRGBA(character, 0, 0, b, height, cell.data());
        } else {
            font.getCharRGBA(character, 0, 0, b, height, cell.data());
        }
        for (int y = 0; y < height; ++y) {
            std::copy_n(cell.data() + static_cast<std::size_t>(y * b) * 4, static_cast<std::size_t>(b) * 4,
                        image.getData() + static_cast<std::size_t>(y * width + pen) * 4);
        }
        pen += b + std::max(c, 0);
    }
    return image;
}

} // namespace

void FontScreen::open()
{
    for (Effect const &effect : effects) {
        Qel::Win32Font font;
        if (font.create("DejaVu Sans", 34, 400, effect.blur, effect.scanlines, effect.flags)) {
            m_sheets.push_back({effect.name, glyphsOf(font, effect.glows), Canvas::nextImageId()});
        }
    }
}

void FontScreen::draw(Canvas &canvas, float x, float y, float w, float h)
{
    if (m_sheets.empty()) {
        canvas.text(x, y, "The system has no \"DejaVu Sans\".", style::faint);
        return;
    }
    float const step = std::min(h / static_cast<float>(m_sheets.size()), 60.0f);
    for (Sheet const &sheet : m_sheets) {
        auto const height = static_cast<float>(sheet.glyphs.getHeight());
        canvas.text(x, y + (height - canvas.lineHeight()) / 2, sheet.effect, style::accent);
        canvas.fill(x + 120, y - 2, w - 120, height + 4, style::bar);
        canvas.image(sheet.glyphs, x + 130, y, static_cast<float>(sheet.glyphs.getWidth()), height, sheet.id);
        y += step;
    }
}
