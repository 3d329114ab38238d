#include "System/Platform/win32Font.h"

#include "System/Platform/win32FontCanvas.h"
#include "System/System/logManager.h"
#include "System/System/stringTools.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace Qel {

namespace {

constexpr int largestBlur = 255;
constexpr int tab = 9;

// Of 64 levels; more counts as 64.
constexpr auto alphaOfLevel = [] {
    std::array<unsigned char, 256> alphas{};
    for (std::size_t level = 0; level < alphas.size(); ++level) {
        alphas[level] = static_cast<unsigned char>(std::min(static_cast<float>(level) / 64.0f, 1.0f) * 255);
    }
    return alphas;
}();

signed char cut(int value)
{
    return static_cast<signed char>(value);
}

} // namespace

Win32Font::~Win32Font() = default;

bool Win32Font::fail()
{
    m_name[0] = 0;
    m_font.reset();
    return false;
}

bool Win32Font::create(char const *name, int height, int weight, int blurRadius, int scanlinePeriod,
                       int flags)
{
    std::strncpy(m_name, name == nullptr ? "" : name, sizeof m_name - 1);
    m_name[sizeof m_name - 1] = 0;
    m_height = height;
    m_weight = weight;
    m_flags = flags;
    m_antialiased = (flags & ANTIALIASED) != 0;
    m_rotary = (flags & ROTARY) != 0;
    m_flag4 = (flags & STORED_ONLY) != 0;
    m_shadow = (flags & DROP_SHADOW) != 0 ? 1 : 0;
    m_outline = (flags & OUTLINE) != 0 ? 1 : 0;
    m_scanlinePeriod = scanlinePeriod;
    m_blurRadius = blurRadius;
    if (!os::FontFace::exists(m_name)) {
        if (LogManager::checkDefLogLevel(2)) {
            LogManager::defLevelMessage("Couldn't find windows font '%s' to load\n", m_name);
        }
        return fail();
    }
    os::FontWish wish;
    wish.name = m_name;
    wish.height = height;
    wish.weight = weight;
    wish.italic = (flags & ITALIC) != 0;
    wish.underline = (flags & UNDERLINE) != 0;
    wish.strikeout = (flags & STRIKEOUT) != 0;
    wish.symbol = (flags & SYMBOL) != 0;
    wish.antialiased = m_antialiased;
    m_font = os::FontFace::open(wish);
    if (m_font == nullptr || blurRadius < 0 || blurRadius > largestBlur) {
        return fail();
    }
    m_ascent = m_font->ascent();
    m_maxCharWidth = m_font->widestAdvance();
    m_cellHeight = m_font->lineHeight() + m_shadow + 2 * m_outline;
    m_dibWidth = m_maxCharWidth + 2 * m_outline;
    m_dibHeight = m_cellHeight;
    m_dibBits.assign(static_cast<std::size_t>(m_dibWidth) * static_cast<std::size_t>(m_dibHeight), 0);
    fillWidths();
    m_blurKernel.clear();
    if (m_blurRadius >= 2) {
        double const s = m_blurRadius * 0.683;
        for (int i = -m_blurRadius; i <= m_blurRadius; ++i) {
            m_blurKernel.push_back(static_cast<float>(std::pow(2.7, -(double{1} * i * i) / (2 * s * s)) /
                                                      std::sqrt(s * s * 6.28)));
        }
    }
    return true;
}

void Win32Font::fillWidths()
{
    int const sides = m_outline + m_blurRadius;
    for (int character = 0; character < 256; ++character) {
        os::FontWidths widths{0, m_font->averageAdvance(), 0};
        Abc &abc = m_abc[character];
        if (m_font->widths(static_cast<std::uint32_t>(character), widths)) {
            abc = {cut(widths.a - sides), cut(widths.b + m_shadow + 2 * sides),
                   cut(widths.c - sides - m_shadow), 0};
        } else {
            abc = {0, cut(widths.b), 0, 0};
        }
    }
}

bool Win32Font::isEqualTo(char const *name, int height, int weight, int blurRadius, int, int flags) const
{
    return name != nullptr && StringTools::compare(m_name, name, StringTools::getMapTable(MAP_LOWER)) == 0 &&
           height == m_height && weight == m_weight && blurRadius == m_blurRadius && flags == m_flags;
}

void Win32Font::setAsActiveFont(os::FontContext *context) const
{
    if (context != nullptr) {
        context->font = m_font.get();
    }
}

void Win32Font::getCharABCWidths(int character, int &a, int &b, int &c) const
{
    a = c = 0;
    b = m_maxCharWidth;
    if (character < 0) {
        return;
    }
    if (character < 256) {
        a = m_abc[character].a;
        b = m_abc[character].b;
        c = m_abc[character].c;
        return;
    }
    os::FontWidths widths;
    if (m_font != nullptr && m_font->widths(static_cast<std::uint32_t>(character), widths)) {
        a = widths.a;
        b = widths.b;
        c = widths.c;
    }
}

int Win32Font::getCharWidth(int character) const
{
    int a;
    int b;
    int c;
    getCharABCWidths(character, a, b, c);
    return b;
}

bool Win32Font::drawCoverage(int character, Canvas const &canvas, int b, int &coveredWidth)
{
    os::FontCoverage glyph;
    if (!m_font->coverage(static_cast<std::uint32_t>(character), glyph)) {
        return false;
    }
    coveredWidth = glyph.pitch;
    int const skip = glyph.width >= b + 2 ? (glyph.width - b) / 2 : 0;
    int const firstRow = m_ascent - glyph.top;
    long const left = long{canvas.x} + m_outline - skip + m_blurRadius; // of the bitmap's first column
    long const first = std::max(long{skip}, -left);
    long const end = std::min(long{glyph.width}, canvas.width - left);
    for (int row = 0; row < glyph.height; ++row) {
        long const y = long{canvas.y} + firstRow + row;
        if (y < 0 || y >= canvas.height || first >= end) {
            continue;
        }
        unsigned char *pixel = canvas.pixels + 4 * (y * canvas.width + left + first);
        unsigned char const *const levels = glyph.levels.data() + std::ptrdiff_t{row} * glyph.pitch;
        for (long column = first; column < end; ++column, pixel += 4) {
            unsigned char const colour = levels[column] == 0 || character == tab ? 0 : 255;
            pixel[0] = pixel[1] = pixel[2] = colour;
            pixel[3] = alphaOfLevel[levels[column]];
        }
    }
    return true;
}

void Win32Font::drawText(int character, Canvas const &canvas, int a, int b, int &coveredWidth,
                         int &coveredHeight)
{
    m_font->drawText(static_cast<std::uint32_t>(character), -a, m_dibBits.data(), m_dibWidth, m_dibHeight);
    coveredWidth = std::min(b, m_dibWidth);
    coveredHeight = std::min(m_cellHeight, m_dibHeight);
    for (int row = 0; row < coveredHeight; ++row) {
        for (int column = 0; column < coveredWidth - m_shadow; ++column) {
            unsigned char *const to = canvas.at(column, row);
            if (to == nullptr) {
                continue;
            }
            unsigned char const gray =
                character == tab
                    ? std::uint8_t{0}
                    : m_dibBits[static_cast<std::size_t>(row) * static_cast<std::size_t>(m_dibWidth) +
                                static_cast<std::size_t>(column)];
            float const value = static_cast<float>(gray) / 255;
            to[0] = to[1] = to[2] = gray;
            to[3] = static_cast<unsigned char>((0.11f * value + 0.55f * value + 0.34f * value) * 255);
        }
    }
}

void Win32Font::getCharRGBA(int character, int x, int y, int width, int height, unsigned char *pixels)
{
    if (m_font == nullptr || character < 0 || width <= 0 || height <= 0 || pixels == nullptr) {
        return;
    }
    Canvas const canvas{x, y, width, height, pixels};
    int a;
    int b;
    int c;
    getCharABCWidths(character, a, b, c);
    int coveredWidth = b;
    int coveredHeight = m_cellHeight;
    if (!m_antialiased || !drawCoverage(character, canvas, b, coveredWidth)) {
        drawText(character, canvas, a, b, coveredWidth, coveredHeight);
    }
    if (m_shadow != 0) {
        applyDropShadowToTexture(canvas, coveredWidth, coveredHeight);
    }
    if (m_outline != 0) {
        applyOutlineToTexture(canvas, coveredWidth, coveredHeight);
    }
    applyGaussianBlurToTexture(canvas);
    applyScanlineEffectToTexture(canvas);
    if (m_rotary) {
        applyRotaryEffectToTexture(canvas);
    }
}

void Win32Font::getGlowRGBA(int character, int x, int y, int width, int height, unsigned char *pixels)
{
    int const radius = m_blurRadius;
    m_blurRadius = 2;
    getCharRGBA(character, x, y, width, height, pixels);
    m_blurRadius = 0;
    getCharRGBA(character, x, y, width, height, pixels);
    m_blurRadius = radius;
}

} // namespace Qel
