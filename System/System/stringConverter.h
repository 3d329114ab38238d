#pragma once

#include "Support/D3DX/d3dx9math.h"
#include "System/System/color.h"
#include "System/System/export.h"
#include "System/System/string.h"

namespace Qel {

/// Turns values into text and back.
///
/// Numbers are written as a text stream of the "C" locale writes them by default, floats with six significant
/// digits, and read in that locale, whichever the process uses. Reading never fails: text that cannot be
/// read gives the value each operation states.
class QEL_API StringConverter {
public:
    StringConverter() = delete;

    static String toString(float value);
    static String toString(int value);
    static String toString(unsigned int value);
    static String toString(D3DXVECTOR3 const &value); ///< x, y and z with one blank between them
    static String toString(D3DXMATRIX const &value);  ///< the 16 elements row by row, one blank between them
    static String toString(bool value);               ///< "true" or "false"; String(bool) gives "1" or "0"
    static String toString(Color value);              ///< eight hexadecimal digits, lower case
    static String toString(void const *) = delete;    // else a pointer would be a bool

    /// The number at the start of the text after white space, also hexadecimal, "inf" and "nan"; 0 if there
    /// is none; infinity if it is beyond a float's range.
    static float parseReal(String const &text);

    /// The decimal number at the start of the text after white space; 0 if there is none. A number out of
    /// range gives the nearest `int`.
    static int parseInt(String const &text);

    /// The hexadecimal number at the start of the text after white space, with sign and "0x" if it has them;
    /// 0 if there is none. A number out of range gives 0xFFFFFFFF.
    static unsigned int parseHex(String const &text);

    static Color parseColorValue(String const &text); ///< parseHex() as a colour

    /// Is the text exactly "1" or "true"?
    static bool parseBool(String const &text);

    /// Three numbers separated by tabs, newlines or blanks; the zero vector if there are not exactly three
    /// pieces.
    static D3DXVECTOR3 parseVector3d(String const &text);

    /// Sixteen numbers, row by row, separated in the same way; the identity matrix if there are not exactly
    /// sixteen pieces.
    static D3DXMATRIX parseMatrix4d(String const &text);
};

} // namespace Qel
