#pragma once

#include "Support/Font/fontFace.h"
#include "System/System/export.h"

#include <memory>
#include <vector>

namespace Qel {

/// Draws single characters of a system font into a caller's pixels, for a text renderer that keeps glyphs in
/// a texture. Beside the plain glyph there are a drop shadow, an outline, a blur, scan lines, a rotary line
/// and a glow of two passes.
///
/// Pixels are 4 bytes: blue, green, red, alpha; rows follow each other without a gap. Glyphs are white.
///
/// @code
/// Win32Font font;
/// if (font.create("DejaVu Sans", 24, 400, 0, 0, Win32Font::ANTIALIASED | Win32Font::DROP_SHADOW)) {
///     font.getCharRGBA('A', 0, 0, 32, font.getHeight(), pixels);
/// }
/// @endcode
///
/// @par Limits   Widths of characters below 256 are kept in signed bytes: one above 127 reads as negative.
/// @par Threads  One at a time.
class QEL_API Win32Font {
public:
    /// @name Flags of create()
    /// @{
    static constexpr int ANTIALIASED = 1;
    static constexpr int DROP_SHADOW = 2; ///< of one pixel, to the right and down
    static constexpr int OUTLINE = 4;     ///< of one pixel
    static constexpr int ROTARY = 8;      ///< a gray line across the middle
    static constexpr int STORED_ONLY = 16;
    static constexpr int SYMBOL = 32; ///< character codes are the face's own symbols
    static constexpr int ITALIC = 64;
    static constexpr int UNDERLINE = 128; ///< of characters that are not antialiased
    static constexpr int STRIKEOUT = 256; ///< of characters that are not antialiased
    /// @}

    Win32Font() = default;
    ~Win32Font();
    Win32Font(Win32Font const &) = delete;
    Win32Font &operator=(Win32Font const &) = delete;

    /// Opens a face; once per object.
    /// @param name            of the family, exactly but for its case; 31 characters count
    /// @param height          pixels: above 0 of a line, below 0 of a character
    /// @param weight          400 is regular, 700 bold
    /// @param blurRadius      pixels, up to 255; from 2 on glyphs are blurred, 1 widens the cells alone
    /// @param scanlinePeriod  above 1: all rows but each so-manieth are darkened
    /// @param flags           of those above
    /// @return false, with the font invalid, if there is no such face (with a line in the log) or it cannot
    ///         be used
    bool create(char const *name, int height, int weight, int blurRadius, int scanlinePeriod, int flags);

    bool isValid() const { return m_name[0] != 0; }
    char const *getName() const { return m_name; }
    int getFlags() const { return m_flags; }
    int getHeight() const { return m_cellHeight; } ///< of a cell: line, shadow and outline
    int getMaxCharWidth() const { return m_maxCharWidth; }

    /// Would create() with these make the same font? Case of the name and scan lines make no difference.
    bool isEqualTo(char const *name, int height, int weight, int blurRadius, int scanlinePeriod,
                   int flags) const;

    void setAsActiveFont(os::FontContext *context) const; ///< selects it into a context; null is allowed

    /// Space before a character, its own width, and space behind it, with the effects' room.
    /// @param character  not negative
    void getCharABCWidths(int character, int &a, int &b, int &c) const;
    int getCharWidth(int character) const; ///< the b of getCharABCWidths()

    /// Draws a character. Nothing is written outside the buffer.
    /// @param x,y           where its cell begins
    /// @param width,height  of the buffer, in pixels
    /// @param pixels        4 * @p width * @p height bytes
    void getCharRGBA(int character, int x, int y, int width, int height, unsigned char *pixels);

    /// Draws it with a blur radius of 2 and then with one of 0. Only a font with a blur of its own is
    /// blurred.
    void getGlowRGBA(int character, int x, int y, int width, int height, unsigned char *pixels);

private:
    struct Abc {
        signed char a, b, c, spare;
    };
    struct Canvas;

    bool fail();
    void fillWidths();
    bool drawCoverage(int character, Canvas const &canvas, int b, int &coveredWidth);
    void drawText(int character, Canvas const &canvas, int a, int b, int &coveredWidth, int &coveredHeight);
    void applyDropShadowToTexture(Canvas const &canvas, int coveredWidth, int coveredHeight) const;
    void applyOutlineToTexture(Canvas const &canvas, int coveredWidth, int coveredHeight) const;
    void applyGaussianBlurToTexture(Canvas const &canvas) const;
    void applyScanlineEffectToTexture(Canvas const &canvas) const;
    void applyRotaryEffectToTexture(Canvas const &canvas) const;

    char m_name[32] = {};
    int m_height = 0;
    int m_weight = 0;
    int m_flags = 0;
    bool m_antialiased = false;
    bool m_rotary = false;
    bool m_flag4 = false;
    int m_shadow = 0;
    int m_outline = 0;
    int m_cellHeight = 0;
    int m_maxCharWidth = 0;
    int m_ascent = 0;
    Abc m_abc[256] = {};
    std::unique_ptr<os::FontFace> m_font;
    int m_dibWidth = 0;
    int m_dibHeight = 0;
    std::vector<unsigned char> m_dibBits; // one byte a pixel: its colours are all the same
    int m_scanlinePeriod = 0;
    int m_blurRadius = 0;
    std::vector<float> m_blurKernel; // empty for a radius below 2
};

} // namespace Qel
