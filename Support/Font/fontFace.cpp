#include "Support/Font/fontFace.h"

#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H
#include FT_TRUETYPE_TABLES_H

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>

namespace os {

namespace {

constexpr int usualHeight = 12;
constexpr int largestHeight = 4096;
constexpr int boldFrom = 600;
constexpr int levels = 64;
constexpr int pixel = 64; // in the units of the rasteriser

struct PatternFree {
    void operator()(FcPattern *pattern) const { FcPatternDestroy(pattern); }
};
struct ObjectsFree {
    void operator()(FcObjectSet *objects) const { FcObjectSetDestroy(objects); }
};
struct SetFree {
    void operator()(FcFontSet *set) const { FcFontSetDestroy(set); }
};
using Pattern = std::unique_ptr<FcPattern, PatternFree>;

struct Found {
    std::string file;
    int index = 0;
    int weight = 400;
    bool italic = false;
};

// All outline fonts of a family, and of these the one nearest to what is wanted.
bool findFont(char const *name, int weight, bool italic, Found &found)
{
    if (name == nullptr || *name == 0) {
        return false;
    }
    Pattern const pattern(FcPatternCreate());
    std::unique_ptr<FcObjectSet, ObjectsFree> const objects(
        FcObjectSetBuild(FC_FILE, FC_INDEX, FC_WEIGHT, FC_SLANT, FC_WIDTH, static_cast<char *>(nullptr)));
    if (pattern == nullptr || objects == nullptr ||
        !FcPatternAddString(pattern.get(), FC_FAMILY, reinterpret_cast<FcChar8 const *>(name)) ||
        !FcPatternAddBool(pattern.get(), FC_SCALABLE, FcTrue)) {
        return false;
    }
    std::unique_ptr<FcFontSet, SetFree> const fonts(FcFontList(nullptr, pattern.get(), objects.get()));
    int best = -1;
    for (int i = 0; fonts != nullptr && i < fonts->nfont; ++i) {
        FcChar8 *file = nullptr;
        int index = 0;
        int fontWeight = FC_WEIGHT_REGULAR;
        int slant = FC_SLANT_ROMAN;
        int width = FC_WIDTH_NORMAL;
        FcPatternGetInteger(fonts->fonts[i], FC_INDEX, 0, &index);
        FcPatternGetInteger(fonts->fonts[i], FC_WEIGHT, 0, &fontWeight);
        FcPatternGetInteger(fonts->fonts[i], FC_SLANT, 0, &slant);
        FcPatternGetInteger(fonts->fonts[i], FC_WIDTH, 0, &width);
        if (FcPatternGetString(fonts->fonts[i], FC_FILE, 0, &file) != FcResultMatch) {
            continue;
        }
        int const openTypeWeight = FcWeightToOpenType(fontWeight);
        bool const isItalic = slant != FC_SLANT_ROMAN;
        int const away = std::abs(openTypeWeight - (weight == 0 ? 400 : weight)) +
                         (isItalic == italic ? 0 : 2000) + 20 * std::abs(width - FC_WIDTH_NORMAL);
        // Of equals the first by name: what the system lists first changes with its caches.
        std::string const path = reinterpret_cast<char const *>(file);
        if (best < 0 || away < best || (away == best && path < found.file)) {
            best = away;
            found = {path, index, openTypeWeight, isItalic};
        }
    }
    return best >= 0;
}

int rounded(FT_Pos position)
{
    return static_cast<int>((position + pixel / 2) >> 6);
}

} // namespace

struct FontFace::Face {
    FT_Library library = nullptr;
    FT_Face face = nullptr;
    FontWish wish;
    bool isEmboldened = false;
    bool isSlanted = false;
    int ascent = 0;
    int descent = 0;

    Face() = default;
    Face(Face const &) = delete;
    Face &operator=(Face const &) = delete;
    ~Face()
    {
        if (face != nullptr) {
            FT_Done_Face(face);
        }
        if (library != nullptr) {
            FT_Done_FreeType(library);
        }
    }

    bool open(FontWish const &wanted);
    bool setHeight(int height);
    bool render(std::uint32_t character, FT_Render_Mode mode);
    bool loadOutline(std::uint32_t character);
};

bool FontFace::Face::open(FontWish const &wanted)
{
    Found found;
    wish = wanted;
    wish.name = nullptr; // the caller's text
    if (!findFont(wanted.name, wanted.weight, wanted.italic, found) || FT_Init_FreeType(&library) != 0 ||
        FT_New_Face(library, found.file.c_str(), found.index & 0xFFFF, &face) != 0 || !FT_IS_SCALABLE(face)) {
        return false;
    }
    isEmboldened = wanted.weight >= boldFrom && found.weight < boldFrom;
    isSlanted = wanted.italic && !found.italic;
    if (wanted.symbol) {
        FT_Select_Charmap(face, FT_ENCODING_MS_SYMBOL); // a face without one keeps its letters
    }
    return setHeight(wanted.height);
}

bool FontFace::Face::setHeight(int height)
{
    int const wanted = std::clamp(height == 0 ? usualHeight : height, -largestHeight, largestHeight);
    auto const *const table = static_cast<TT_OS2 const *>(FT_Get_Sfnt_Table(face, FT_SFNT_OS2));
    long up = table != nullptr ? table->usWinAscent : face->ascender;
    long down = table != nullptr ? table->usWinDescent : -face->descender;
    long const em = face->units_per_EM;
    if (em <= 0 || up + down <= 0 || up < 0 || down < 0) {
        up = em;
        down = 0;
    }
    if (em <= 0) {
        return false;
    }
    // A height above 0 is that of the line: the em is what leaves room for ascent and descent.
    long const size = wanted < 0 ? -static_cast<long>(wanted) * pixel : wanted * em * pixel / (up + down);
    if (FT_Set_Char_Size(face, 0, std::max(size, 1L), 72, 72) != 0) {
        return false;
    }
    ascent = static_cast<int>((up * size / em + pixel / 2) / pixel);
    descent = wanted > 0 ? wanted - ascent : static_cast<int>((down * size / em + pixel / 2) / pixel);
    return true;
}

bool FontFace::Face::loadOutline(std::uint32_t character)
{
    constexpr std::uint32_t symbols = 0xF000;
    FT_UInt glyph = FT_Get_Char_Index(face, character);
    if (glyph == 0 && wish.symbol && character < 256) {
        glyph = FT_Get_Char_Index(face, symbols + character);
    }
    if (FT_Load_Glyph(face, glyph, FT_LOAD_NO_BITMAP | FT_LOAD_TARGET_NORMAL) != 0) {
        return false;
    }
    if (face->glyph->format != FT_GLYPH_FORMAT_OUTLINE) {
        return false;
    }
    if (isEmboldened) {
        FT_Pos const strength = FT_MulFix(face->units_per_EM, face->size->metrics.y_scale) / 24;
        FT_Outline_Embolden(&face->glyph->outline, strength);
        face->glyph->advance.x += strength;
    }
    if (isSlanted) {
        FT_Matrix const slant{0x10000, 0x5700, 0, 0x10000};
        FT_Outline_Transform(&face->glyph->outline, &slant);
    }
    return true;
}

bool FontFace::Face::render(std::uint32_t character, FT_Render_Mode mode)
{
    return loadOutline(character) && FT_Render_Glyph(face->glyph, mode) == 0;
}

FontFace::FontFace(std::unique_ptr<Face> face) : m_face(std::move(face))
{
}

FontFace::~FontFace() = default;

std::unique_ptr<FontFace> FontFace::open(FontWish const &wish)
{
    auto face = std::make_unique<Face>();
    if (!face->open(wish)) {
        return nullptr;
    }
    return std::make_unique<FontFace>(std::move(face));
}

bool FontFace::exists(char const *name)
{
    Found found;
    return findFont(name, 0, false, found);
}

int FontFace::lineHeight() const
{
    return m_face->ascent + m_face->descent;
}

int FontFace::ascent() const
{
    return m_face->ascent;
}

int FontFace::widestAdvance() const
{
    return std::max(rounded(m_face->face->size->metrics.max_advance), 1);
}

int FontFace::averageAdvance() const
{
    auto const *const table = static_cast<TT_OS2 const *>(FT_Get_Sfnt_Table(m_face->face, FT_SFNT_OS2));
    return table == nullptr ? widestAdvance() / 2
                            : rounded(FT_MulFix(table->xAvgCharWidth, m_face->face->size->metrics.x_scale));
}

bool FontFace::widths(std::uint32_t character, FontWidths &out)
{
    if (!m_face->render(character, FT_RENDER_MODE_NORMAL)) {
        return false;
    }
    FT_GlyphSlot const slot = m_face->face->glyph;
    int const advance = rounded(slot->advance.x);
    if (slot->bitmap.width == 0 || slot->bitmap.rows == 0) {
        out = {0, advance, 0};
        return true;
    }
    int const width = static_cast<int>(slot->bitmap.width);
    out = {slot->bitmap_left, width, advance - slot->bitmap_left - width};
    return true;
}

bool FontFace::coverage(std::uint32_t character, FontCoverage &out)
{
    if (!m_face->render(character, FT_RENDER_MODE_NORMAL)) {
        return false;
    }
    FT_GlyphSlot const slot = m_face->face->glyph;
    FT_Bitmap const &bitmap = slot->bitmap;
    if (bitmap.width == 0 || bitmap.rows == 0 || bitmap.pixel_mode != FT_PIXEL_MODE_GRAY) {
        return false;
    }
    out.width = static_cast<int>(bitmap.width);
    out.height = static_cast<int>(bitmap.rows);
    out.left = slot->bitmap_left;
    out.top = slot->bitmap_top;
    out.pitch = (out.width + 3) / 4 * 4;
    out.levels.assign(static_cast<std::size_t>(out.pitch) * bitmap.rows, 0);
    for (unsigned int row = 0; row < bitmap.rows; ++row) {
        unsigned char const *const from = bitmap.buffer + static_cast<std::ptrdiff_t>(row) * bitmap.pitch;
        unsigned char *const to =
            out.levels.data() + static_cast<std::size_t>(row) * static_cast<unsigned>(out.pitch);
        for (unsigned int column = 0; column < bitmap.width; ++column) {
            to[column] = static_cast<unsigned char>((from[column] * levels + 127) / 255);
        }
    }
    return true;
}

void FontFace::drawText(std::uint32_t character, int penX, unsigned char *gray, int width, int height)
{
    if (gray == nullptr || width <= 0 || height <= 0) {
        return;
    }
    std::memset(gray, 0, static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    FT_Render_Mode const mode = m_face->wish.antialiased ? FT_RENDER_MODE_NORMAL : FT_RENDER_MODE_MONO;
    if (!m_face->render(character, mode)) {
        return;
    }
    FT_GlyphSlot const slot = m_face->face->glyph;
    FT_Bitmap const &bitmap = slot->bitmap;
    auto const put = [&](long column, long row, unsigned char value) {
        if (column >= 0 && column < width && row >= 0 && row < height) {
            gray[row * width + column] = std::max(gray[row * width + column], value);
        }
    };
    for (unsigned int row = 0; row < bitmap.rows; ++row) {
        unsigned char const *const from = bitmap.buffer + static_cast<std::ptrdiff_t>(row) * bitmap.pitch;
        for (unsigned int column = 0; column < bitmap.width; ++column) {
            bool const isBit = bitmap.pixel_mode == FT_PIXEL_MODE_MONO;
            unsigned char const value =
                isBit ? static_cast<unsigned char>((from[column / 8] >> (7 - column % 8) & 1) * 255)
                      : from[column];
            put(long{penX} + slot->bitmap_left + column, long{m_face->ascent} - slot->bitmap_top + row,
                value);
        }
    }
    auto const line = [&](long middle, long thickness) {
        for (long row = middle - thickness / 2; row < middle - thickness / 2 + thickness; ++row) {
            for (long column = penX; column < long{penX} + rounded(slot->advance.x); ++column) {
                put(column, row, 255);
            }
        }
    };
    FT_Face const face = m_face->face;
    FT_Fixed const scale = face->size->metrics.y_scale;
    long const thickness = std::max(rounded(FT_MulFix(face->underline_thickness, scale)), 1);
    if (m_face->wish.underline) {
        line(m_face->ascent - rounded(FT_MulFix(face->underline_position, scale)), thickness);
    }
    if (m_face->wish.strikeout) {
        line(m_face->ascent * 2 / 3, thickness);
    }
}

} // namespace os
