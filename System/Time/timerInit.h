#pragma once

#include "System/System/export.h"

#include <cstdint>

namespace Qel {

/// Which clock runs. Only stored and logged.
enum eTimerType : std::int32_t {
    TIMER_NONE = 0,         ///< nothing has been initialised
    TIMER_MILLISECONDS = 3, ///< the system's millisecond count, the one clock in use
};

/// Calibration of one processor. The library fills none; an application may.
struct sTimerCpu {
    std::uint64_t cycles; ///< the application's
    std::uint64_t times;  ///< times that were measured; 0 ends the table
    std::uint32_t flags;  ///< the application's
    std::uint8_t apicId;
    std::uint64_t clock; ///< Hz
};

/// What all timers of the process share.
///
/// Root's constructor calls init(). Before that the multipliers are 0, and so is every time made from a
/// count.
///
/// @par Threads  init() runs once, before other threads read the values.
class QEL_API TimerInit {
public:
    static eTimerType gTimerType;
    static std::uint64_t gClockSpeed;                ///< Hz of the processor; plays no part in conversions
    static double gClockSpeedMicrosecondsMultiplier; ///< microseconds per count
    static double gClockSpeedMillisecondsMultiplier; ///< milliseconds per count
    static double gClockSpeedSecondsMultiplier;      ///< seconds per count
    static sTimerCpu gTimerCpu[32];                  ///< all zero after init()

    // These stand for asking the system for a clock that ticks each millisecond, and for ending that. This
    // system's clock always does.
    TimerInit() = default;
    ~TimerInit() = default;

    TimerInit(TimerInit const &) = delete;
    TimerInit &operator=(TimerInit const &) = delete;

    static void init(eTimerType type); ///< sets the values above

    /// Logs the clock, and the entries of the table up to the first one that was never measured, at level 3.
    static void debugLog();
};

} // namespace Qel
