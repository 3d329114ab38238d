#include "System/Time/timerInit.h"

#include "Support/OS/clock.h"

#include <algorithm>
#include <iterator>

namespace Qel {

eTimerType TimerInit::gTimerType = TIMER_NONE;
std::uint64_t TimerInit::gClockSpeed = 0;
double TimerInit::gClockSpeedMicrosecondsMultiplier = 0.0;
double TimerInit::gClockSpeedMillisecondsMultiplier = 0.0;
double TimerInit::gClockSpeedSecondsMultiplier = 0.0;
sTimerCpu TimerInit::gTimerCpu[32] = {};

// The kernel's monotonic clock has no coarser setting to switch away from.
TimerInit::TimerInit() = default;
TimerInit::~TimerInit() = default;

void TimerInit::init(eTimerType type)
{
    gTimerType = type;
    gClockSpeed = static_cast<std::uint64_t>(os::performanceFrequency());
    gClockSpeedMicrosecondsMultiplier = 1000.0;
    gClockSpeedMillisecondsMultiplier = 1.0;
    gClockSpeedSecondsMultiplier = 0.001;
    std::fill(std::begin(gTimerCpu), std::end(gTimerCpu), sTimerCpu{});
}

} // namespace Qel
