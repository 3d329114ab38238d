#pragma once

#include "System/System/export.h"
#include "System/Time/timer.h"

namespace Qel {

/// Logs how long its scope took, at level 2: the name, a blank, the seconds and "sec".
class QEL_API TimerHelper {
public:
    /// @param name  at most 256 characters are kept; null stands for "TimerHelper"
    explicit TimerHelper(char const *name);
    ~TimerHelper();

    TimerHelper(TimerHelper const &) = delete;
    TimerHelper &operator=(TimerHelper const &) = delete;

    /// Seconds: the reading that the timer was started at.
    float getTiming() const;

private:
    char m_name[256]; // filled up with zeros; none at the end of a name of 256
    Timer m_timer;
};

} // namespace Qel
