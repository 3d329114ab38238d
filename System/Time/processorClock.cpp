#include "System/Time/processorInfo.h"

#include "Support/OS/affinity.h"
#include "Support/OS/clock.h"
#include "Support/OS/process.h"
#include "Support/OS/processor.h"
#include "Support/OS/thread.h"

#include <bit>
#include <optional>

namespace Qel {

namespace {

constexpr std::uint32_t settleMs = 1;
constexpr std::uint32_t measureMs = 701;
constexpr std::uint64_t unitsPerLoadStep = 100; // 10 us in units of 100 ns

float lastLoad = 0.0f;         // percent of one processor
std::uint32_t lastCpuTime = 0; // 10 us
std::uint32_t lastTick = 0;    // ms; 0 before the first sample

// Keeps the whole process on its first processor.
class FirstProcessorScope {
public:
    FirstProcessorScope()
    {
        if (os::affinity().processMask(m_before) && static_cast<std::uint32_t>(m_before) != 0) {
            std::uint32_t const mask = static_cast<std::uint32_t>(m_before);
            os::affinity().bindProcess(std::uint64_t{1} << std::countr_zero(mask));
            os::sleepMs(0);
        }
    }

    ~FirstProcessorScope()
    {
        if (m_before != 0) {
            os::affinity().bindProcess(m_before);
            os::sleepMs(0);
        }
    }

    FirstProcessorScope(FirstProcessorScope const &) = delete;
    FirstProcessorScope &operator=(FirstProcessorScope const &) = delete;

private:
    std::uint64_t m_before = 0;
};

std::uint32_t spinUntil(std::uint32_t start, std::uint32_t ms)
{
    std::uint32_t now = os::milliseconds();
    while (now - start < ms) {
        now = os::milliseconds();
    }
    return now;
}

} // namespace

std::int64_t ProcessorInfo::calculateClockSpeed(bool bindCpu)
{
    if (std::int64_t const frequency = os::performanceFrequency(); frequency > 0) {
        return frequency;
    }
    os::UrgentScope const urgent;
    std::optional<FirstProcessorScope> bound;
    if (bindCpu) {
        bound.emplace();
    }
    long long first = 0;
    long long last = 0;
    std::uint32_t const start = os::milliseconds();
    spinUntil(start, settleMs);
    getTimeStamp(first);
    std::uint32_t const end = spinUntil(start, measureMs);
    getTimeStamp(last);

    std::uint64_t const ticks = static_cast<std::uint64_t>(last) - static_cast<std::uint64_t>(first);
    return static_cast<std::int64_t>(ticks / (std::uint64_t{end - start} * 1000) * 1'000'000);
}

float ProcessorInfo::getCPULoad(float period)
{
    if (period < 0.0f) {
        return lastLoad;
    }
    std::uint64_t used = 0;
    if (!os::processCpuTime(used)) {
        return lastLoad;
    }
    auto const cpu = static_cast<std::uint32_t>(used / unitsPerLoadStep);
    std::uint32_t const tick = os::milliseconds();
    if (lastTick != 0) {
        std::uint32_t const elapsed = tick - lastTick;
        // Written so that a period that is no number takes no sample, and never divides by 0.
        if (!(static_cast<float>(elapsed) > period * 1000.0f)) {
            return lastLoad;
        }
        lastLoad = static_cast<float>(cpu - lastCpuTime) / static_cast<float>(elapsed);
    }
    lastCpuTime = cpu;
    lastTick = tick;
    return lastLoad;
}

} // namespace Qel
