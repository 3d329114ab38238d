#include "System/Platform/win32Font.h"

#include <benchmark/benchmark.h>
#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H

#include <cstdint>
#include <vector>

// Glyphs a second of the font beside the rasteriser alone, which loads and renders the same characters of the
// same face in the same size into its own bitmap. Argument: pixels of the em.
namespace {

constexpr char const *family = "DejaVu Sans";
constexpr int first = '!';
constexpr int last = '~';
constexpr std::int64_t glyphs = last - first + 1;

enum class Way { Chars, Glow };

void draw(benchmark::State &state, int blurRadius, int flags, Way way)
{
    int const height = static_cast<int>(state.range(0));
    Qel::Win32Font font;
    if (!font.create(family, -height, 400, blurRadius, 0, flags)) {
        state.SkipWithError("no such family");
        return;
    }
    int const side = 2 * height;
    std::vector<unsigned char> pixels(static_cast<std::size_t>(4) * static_cast<std::size_t>(side * side));
    for (auto _ : state) {
        for (int character = first; character <= last; ++character) {
            way == Way::Glow ? font.getGlowRGBA(character, 0, 0, side, side, pixels.data())
                             : font.getCharRGBA(character, 0, 0, side, side, pixels.data());
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * glyphs);
}

void rasterise(benchmark::State &state)
{
    FcPattern *const pattern = FcNameParse(reinterpret_cast<FcChar8 const *>("DejaVu Sans:style=Book"));
    FcConfigSubstitute(nullptr, pattern, FcMatchPattern);
    FcDefaultSubstitute(pattern);
    FcResult result;
    FcPattern *const match = FcFontMatch(nullptr, pattern, &result);
    FcChar8 *file = nullptr;
    FT_Library library = nullptr;
    FT_Face face = nullptr;
    if (FcPatternGetString(match, FC_FILE, 0, &file) != FcResultMatch || FT_Init_FreeType(&library) != 0 ||
        FT_New_Face(library, reinterpret_cast<char const *>(file), 0, &face) != 0 ||
        FT_Set_Char_Size(face, 0, static_cast<FT_F26Dot6>(state.range(0) * 64), 72, 72) != 0) {
        state.SkipWithError("the face cannot be opened");
        return;
    }
    for (auto _ : state) {
        for (FT_ULong character = first; character <= last; ++character) {
            FT_Load_Glyph(face, FT_Get_Char_Index(face, character),
                          FT_LOAD_NO_BITMAP | FT_LOAD_TARGET_NORMAL);
            FT_Render_Glyph(face->glyph, FT_RENDER_MODE_NORMAL);
            benchmark::DoNotOptimize(face->glyph->bitmap.buffer);
        }
    }
    state.SetItemsProcessed(state.iterations() * glyphs);
    FT_Done_Face(face);
    FT_Done_FreeType(library);
    FcPatternDestroy(match);
    FcPatternDestroy(pattern);
}

using Font = Qel::Win32Font;
constexpr int smooth = Font::ANTIALIASED;

#define QEL_SIZES ->Arg(12)->Arg(24)->Arg(64)
BENCHMARK(rasterise)->Name("BM_FreeType") QEL_SIZES;
BENCHMARK_CAPTURE(draw, smooth, 0, smooth, Way::Chars)->Name("BM_Win32Font_antialiased") QEL_SIZES;
BENCHMARK_CAPTURE(draw, text, 0, 0, Way::Chars)->Name("BM_Win32Font_textOut") QEL_SIZES;
BENCHMARK_CAPTURE(draw, shadow, 0, smooth | Font::DROP_SHADOW, Way::Chars)
    ->Name("BM_Win32Font_shadow") QEL_SIZES;
BENCHMARK_CAPTURE(draw, outline, 0, smooth | Font::OUTLINE, Way::Chars)
    ->Name("BM_Win32Font_outline") QEL_SIZES;
BENCHMARK_CAPTURE(draw, blur, 4, smooth, Way::Chars)->Name("BM_Win32Font_blur4") QEL_SIZES;
BENCHMARK_CAPTURE(draw, glow, 2, smooth, Way::Glow)->Name("BM_Win32Font_glow") QEL_SIZES;
#undef QEL_SIZES

} // namespace
