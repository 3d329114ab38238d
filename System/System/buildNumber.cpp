#include "System/System/buildNumber.h"

#include "System/System/buildDate.h"

#include <numeric>

namespace Qel {

int BuildNumber::gBuildNumber = BuildNumber::computeBuildNumber(nullptr);

BuildNumber::BuildNumber()
{
    gBuildNumber = computeBuildNumber(nullptr);
}

int BuildNumber::computeBuildNumber(char const *date)
{
    constexpr int monthDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    constexpr int dayOfNumber0 = 37958;

    BuildDate const built(date, nullptr);
    int const year = built.year - 1900;
    int days = std::accumulate(monthDays, monthDays + built.month - 1, built.day - 1);
    days += static_cast<int>((year - 1) * 365.25);
    if (year % 4 == 0 && built.month > 2) {
        ++days;
    }
    return days - dayOfNumber0;
}

} // namespace Qel
