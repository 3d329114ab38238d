#pragma once

#include "System/System/export.h"
#include "System/System/logManager.h"
#include "System/Time/timer.h"

#include <cstdint>

namespace Qel {

/// Collects the named steps of a long operation and reports them only if the whole went over a limit.
///
/// @code
/// TimeStepCollect steps(50, "level load");
/// loadGeometry();
/// steps.step("geometry");
/// loadSounds();
/// steps.step("sounds");
/// steps.dumpStats(3);
/// @endcode
class QEL_API TimeStepCollect {
public:
    /// Starts the time.
    /// @param limitMs  milliseconds
    /// @param name     kept, not copied: must outlive the object
    TimeStepCollect(unsigned int limitMs, char const *name);

    /// Notes that a step has ended now. The 33rd and later ones are dropped.
    /// @param stepName  kept, not copied: must outlive the object
    void step(char const *stepName);

    /// Logs the name and all steps with their times and differences, in milliseconds, if the time since the
    /// start is above the limit; nothing otherwise.
    void dumpStats(LogMessageLevel level);

private:
    struct Step {
        char const *name;
        std::uint32_t ms; // since the start
    };

    static constexpr unsigned int maxSteps = 32;

    Timer m_timer;
    Step m_steps[maxSteps];
    unsigned int m_stepCount = 0;
    unsigned int m_limit; // ms
    char const *m_name;
};

} // namespace Qel
