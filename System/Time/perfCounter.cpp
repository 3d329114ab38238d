#include "System/Time/perfCounter.h"

#include "Support/OS/clock.h"
#include "System/Thread/cpuBinding.h"

namespace Qel {

namespace {

// A plain number, so that two failed readings are 0 apart.
constexpr std::int64_t failedCount = 12346;
constexpr std::int64_t failedFrequency = 1'000'000;

// Modulo 2^64, as the sums of a counter are.
std::int64_t difference(std::int64_t later, std::int64_t earlier)
{
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(later) - static_cast<std::uint64_t>(earlier));
}

std::int64_t product(std::int64_t ticks, std::uint64_t factor)
{
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(ticks) * factor);
}

} // namespace

std::int64_t PerfCounter::getTickCounter()
{
    cCpuBinding::bindCurrentThread(cCpuBinding::BIND_AUTO);
    std::int64_t const count = os::performanceCounter();
    return count < 0 ? failedCount : count;
}

void PerfCounter::start()
{
    m_start = getTickCounter();
    m_frequency = os::performanceFrequency();
    if (m_frequency <= 0) {
        m_frequency = failedFrequency;
    }
}

void PerfCounter::end()
{
    m_duration = difference(getTickCounter(), m_start);
}

std::int64_t PerfCounter::getDurationInProgress() const
{
    return difference(getTickCounter(), m_start);
}

unsigned int PerfCounter::ticksToMicroseconds(std::int64_t ticks) const
{
    return m_frequency == 0 ? 0 : static_cast<unsigned int>(product(ticks, 1'000'000) / m_frequency);
}

unsigned int PerfCounter::ticksToMilliseconds(std::int64_t ticks) const
{
    return m_frequency == 0 ? 0 : static_cast<unsigned int>(product(ticks, 1000) / m_frequency);
}

float PerfCounter::ticksToMicrosecondsF(std::int64_t ticks) const
{
    return m_frequency == 0 ? 0.0f
                            : static_cast<float>(static_cast<double>(ticks) * 1'000'000.0 /
                                                 static_cast<double>(m_frequency));
}

float PerfCounter::ticksToMillisecondsF(std::int64_t ticks) const
{
    return m_frequency == 0 ? 0.0f
                            : static_cast<float>(static_cast<double>(product(ticks, 1000)) /
                                                 static_cast<double>(m_frequency));
}

float PerfCounter::ticksToSeconds(std::int64_t ticks) const
{
    return m_frequency == 0
               ? 0.0f
               : static_cast<float>(static_cast<double>(ticks) / static_cast<double>(m_frequency));
}

} // namespace Qel
