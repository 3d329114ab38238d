#include "System/Time/timerCycle.h"

#include "Support/OS/clock.h"

#include <limits>

namespace Qel {

namespace {

constexpr double twoTo63 = 9223372036854775808.0;
constexpr double twoTo64 = 2.0 * twoTo63;

// A time beyond 64 bits has no low half to give: 0.
std::uint32_t lowHalf(double time)
{
    return time < twoTo64 ? static_cast<std::uint32_t>(static_cast<std::uint64_t>(time)) : 0;
}

} // namespace

void TimerCycle::init(float ms)
{
    m_count = 0;
    if (!(TimerInit::gClockSpeedMillisecondsMultiplier > 0.0)) {
        return;
    }
    double const count = static_cast<double>(ms) / TimerInit::gClockSpeedMillisecondsMultiplier;
    if (count >= twoTo64) {
        m_count = std::numeric_limits<std::uint64_t>::max();
    } else if (count >= 0.0) {
        m_count = static_cast<std::uint64_t>(count);
    } else if (count >= -twoTo63) {
        m_count = static_cast<std::uint64_t>(static_cast<std::int64_t>(count));
    } else if (count < 0.0) {
        m_count = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::min());
    }
}

void TimerCycle::sample()
{
    m_count = os::milliseconds();
}

std::uint32_t TimerCycle::getMicroseconds() const
{
    return lowHalf(getMicrosecondsF());
}

std::uint32_t TimerCycle::getMilliseconds() const
{
    return lowHalf(getMillisecondsF());
}

} // namespace Qel
