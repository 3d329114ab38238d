#pragma once

#include "Support/export.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace os {

/// How a face is wanted.
struct FontWish {
    char const *name = nullptr; ///< of the family; case makes no difference
    int height = 0;             ///< pixels: above 0 of a line, below 0 of a character; 0 for a usual size
    int weight = 400;           ///< 400 is regular, 700 bold; 0 for any
    bool italic = false;
    bool underline = false;
    bool strikeout = false;
    bool symbol = false;      ///< character codes are the face's own symbols
    bool antialiased = false; ///< for drawText()
};

/// Widths of a character in pixels: space before it, its black part, space behind it. All three together lead
/// to the next character.
struct FontWidths {
    int a = 0;
    int b = 0;
    int c = 0;
};

/// A character's coverage: levels 0 to 64.
struct FontCoverage {
    int width = 0;  ///< pixels of the black part
    int height = 0; ///< rows
    int left = 0;   ///< from the character's origin to its first column
    int top = 0;    ///< from the base line up to its first row
    int pitch = 0;  ///< bytes from row to row: the width, rounded up to a multiple of 4
    std::vector<unsigned char> levels;
};

/// A face of the system in one size: a family by its exact name or none at all. Bold and oblique are made up
/// where the family has none.
///
/// @par Threads  One at a time.
class QEL_API FontFace {
    struct Face;

public:
    explicit FontFace(std::unique_ptr<Face> face); ///< for open() alone
    /// @return null if there is no such family, or its file cannot be used
    static std::unique_ptr<FontFace> open(FontWish const &wish);
    static bool exists(char const *name); ///< is there a family of that name?

    ~FontFace();
    FontFace(FontFace const &) = delete;
    FontFace &operator=(FontFace const &) = delete;

    int lineHeight() const;     ///< ascent and descent, pixels
    int ascent() const;         ///< pixels above the base line
    int widestAdvance() const;  ///< pixels
    int averageAdvance() const; ///< pixels

    bool widths(std::uint32_t character, FontWidths &out); ///< false if that cannot be told

    /// @return false for a character without any black part, as the space
    bool coverage(std::uint32_t character, FontCoverage &out);

    /// Draws a character, with its underline and strikeout, white on black.
    /// @param penX   column of its origin; its line begins at row 0
    /// @param gray   @p width * @p height bytes, cleared first
    void drawText(std::uint32_t character, int penX, unsigned char *gray, int width, int height);

private:
    std::unique_ptr<Face> m_face;
};

/// What stands for a device context: it knows the font that is selected into it.
struct FontContext {
    FontFace *font = nullptr; ///< not owned
};

} // namespace os
