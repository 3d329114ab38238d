#pragma once

#include "System/System/export.h"

#include <cstdint>

namespace Qel {

/// Which of the tables that characters are mapped through before they are compared or hashed.
enum MapTableType : std::uint32_t {
    MAP_IDENTITY = 0, ///< every byte as it is
    MAP_LOWER = 1,    ///< lower case: ASCII, and the three German umlauts of Latin-1
    MAP_PATH = 2,     ///< as MAP_LOWER, and a backslash is a slash: neither case nor kind of separator counts
};

/// The same three values, as the wildcard match calls them.
using WildCardCompareTypes = MapTableType;

/// Routines on plain terminated texts. A map is a table of 256 bytes; with a null map, characters stand for
/// themselves.
///
/// The tables never change, so everything here may be called on any thread.
class QEL_API StringTools {
public:
    using enum MapTableType; ///< so that StringTools::MAP_LOWER is a name, too

    StringTools() = delete;

    static void init();   ///< nothing to do: the tables are ready before any code runs
    static void deinit(); ///< does nothing

    /// @return the table; that of MAP_IDENTITY for a value that names none
    static unsigned char const *getMapTable(MapTableType type);

    /// Does the whole text match the pattern? Characters are compared through @p map.
    ///
    /// `?` stands for any one character. `*` stands for zero or more characters, at the end of the pattern
    /// for one or more: "abc*" does not match "abc", and "*" does not match "". A `*` that meets a `*` in the
    /// text is that character and no wildcard. Null counts as empty. The work is bounded by the product of
    /// the lengths.
    static bool wcMatch(char const *pattern, char const *text, unsigned char const *map);

    /// The same for wide texts; characters from 256 up are not mapped.
    static bool wcMatch(wchar_t const *pattern, wchar_t const *text, unsigned char const *map);

    /// Copies a text and its terminator through @p map.
    /// @param dest  room for the text and its terminator; may be @p src
    /// @param src   null does nothing
    static void remap(char *dest, char const *src, unsigned char const *map);

    /// The same for wide texts; characters from 256 up pass unchanged.
    static void remap(wchar_t *dest, wchar_t const *src, unsigned char const *map);

    static void toLower(char *text);    ///< in place through MAP_LOWER; null does nothing
    static void toLower(wchar_t *text); ///< in place through MAP_LOWER; null does nothing

    /// The CRC-32 of the text (reflected polynomial 0xEDB88320, started at 0xFFFFFFFF, not inverted at the
    /// end); 0xFFFFFFFF for the empty text and for null.
    static std::uint32_t calcHash(char const *text);

    /// The same of the text as @p map gives it.
    static std::uint32_t calcHash(char const *text, unsigned char const *map);

    /// Compares byte by byte, unsigned. Null counts as empty.
    /// @return -1, 0 or 1
    static int compare(char const *a, char const *b);

    /// Compares through @p map. Null counts as empty.
    /// @return the difference of the first mapped bytes that differ, cut to a signed 8-bit value; 0 if none
    /// do.
    ///         So the sign says which is less only for bytes less than 128 apart.
    static int compare(char const *a, char const *b, unsigned char const *map);

    /// Copies until the terminator is copied or @p size bytes are written.
    /// @return the bytes written with the terminator; 0 if it did not fit, and then @p dest has none
    static unsigned int strCpy(void *dest, unsigned int size, char const *src);
};

} // namespace Qel
