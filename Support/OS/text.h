#pragma once

#include "Support/export.h"

#include <string>
#include <string_view>

namespace os {

/// Wide text as UTF-8, the narrow text of this process. A lone surrogate or a value beyond 0x10FFFF becomes
/// U+FFFD.
QEL_API std::string toNarrow(std::wstring_view text);

/// UTF-8 as wide text, one character for each code point. Each ill-formed sequence becomes one U+FFFD, cut
/// where a well-formed one could begin.
QEL_API std::wstring toWide(std::string_view text);

} // namespace os
