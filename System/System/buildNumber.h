#pragma once

#include "System/System/export.h"

namespace Qel {

/// Builds are counted by day: the number of days from 4 December 2004, exact for dates up to 2099.
class QEL_API BuildNumber {
public:
    static int gBuildNumber; ///< the library's own, set when it is loaded

    BuildNumber(); ///< works the library's own number out again

    static int getBuildNumber() { return gBuildNumber; }

    /// The number of a date.
    /// @param date  as BuildDate takes it; null stands for the library's own
    static int computeBuildNumber(char const *date);
};

} // namespace Qel
