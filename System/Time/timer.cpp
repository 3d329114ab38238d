#include "System/Time/timer.h"

namespace Qel {

void Timer::start()
{
    m_start.sample();
}

void Timer::end()
{
    m_end.sample();
    m_start = TimerCycle::elapsed(m_start, m_end);
}

void Timer::endAsStart()
{
    m_start = m_end;
}

TimerCycle const &Timer::getDurationInProgress()
{
    m_end.sample();
    m_inProgress = TimerCycle::elapsed(m_start, m_end);
    return m_inProgress;
}

} // namespace Qel
