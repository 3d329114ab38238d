#include "System/Time/timerInit.h"

#include "Support/OS/clock.h"
#include "System/System/logManager.h"
#include "System/Time/processorInfo.h"

#include <algorithm>
#include <cinttypes>
#include <iterator>

namespace Qel {

namespace {

constexpr std::uint64_t hertzPerMegahertz = 1'000'000;

} // namespace

eTimerType TimerInit::gTimerType = TIMER_NONE;
std::uint64_t TimerInit::gClockSpeed = 0;
double TimerInit::gClockSpeedMicrosecondsMultiplier = 0.0;
double TimerInit::gClockSpeedMillisecondsMultiplier = 0.0;
double TimerInit::gClockSpeedSecondsMultiplier = 0.0;
sTimerCpu TimerInit::gTimerCpu[32] = {};

void TimerInit::init(eTimerType type)
{
    gTimerType = type;
    ProcessorInfo const *const processor = ProcessorInfo::InstancePtr();
    gClockSpeed = static_cast<std::uint64_t>(processor != nullptr ? processor->getCycles()
                                                                  : os::performanceFrequency());
    gClockSpeedMicrosecondsMultiplier = 1000.0;
    gClockSpeedMillisecondsMultiplier = 1.0;
    gClockSpeedSecondsMultiplier = 0.001;
    std::fill(std::begin(gTimerCpu), std::end(gTimerCpu), sTimerCpu{});
}

void TimerInit::debugLog()
{
    logMessage(3, "timer=%d running on %dMhz (Cycles:%" PRId64 ")\n", static_cast<int>(gTimerType),
               static_cast<int>(gClockSpeed / hertzPerMegahertz), static_cast<std::int64_t>(gClockSpeed));
    for (sTimerCpu const &cpu : gTimerCpu) {
        if (cpu.times == 0) {
            break;
        }
        logMessage(3, "times=%" PRId64 " apic=0x%x mhz:%d\n", static_cast<std::int64_t>(cpu.times),
                   static_cast<unsigned>(cpu.apicId), static_cast<int>(cpu.clock / hertzPerMegahertz));
    }
}

} // namespace Qel
