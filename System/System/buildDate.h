#pragma once

#include "System/System/export.h"

#include <cstdint>

namespace Qel {

/// When something was built, as text and in numbers.
///
/// The texts have the form of the compiler's own: "Aug 21 2008", "Aug  1 2008", "09:05:07". Texts of another
/// form give numbers without meaning and do no harm.
class QEL_API BuildDate {
public:
    char date[32];       ///< at most 31 characters, then zeros
    char time[32];       ///< at most 31 characters, then zeros
    std::uint16_t day;   ///< of the month
    std::uint16_t month; ///< 1 to 12; a month that is not known counts as December
    std::uint16_t year;
    std::uint16_t hour;
    std::uint16_t minute;
    std::uint16_t second;

    BuildDate() { set(nullptr, nullptr); } ///< the library's own build
    BuildDate(char const *dateText, char const *timeText) { set(dateText, timeText); } ///< see set()

    /// Sets all fields.
    /// @param dateText, timeText  copied; null stands for the library's own
    void set(char const *dateText, char const *timeText);
};

} // namespace Qel
