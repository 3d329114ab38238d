#include "System/System/timeStepCollect.h"

namespace Qel {

namespace {

char const *orEmpty(char const *name)
{
    return name == nullptr ? "" : name;
}

} // namespace

TimeStepCollect::TimeStepCollect(unsigned int limitMs, char const *name)
    : m_steps{}, m_limit(limitMs), m_name(orEmpty(name))
{
    m_timer.start();
}

void TimeStepCollect::step(char const *stepName)
{
    if (m_stepCount < maxSteps) {
        m_steps[m_stepCount] = {orEmpty(stepName), m_timer.getDurationInProgress().getMilliseconds()};
        ++m_stepCount;
    }
}

void TimeStepCollect::dumpStats(LogMessageLevel level)
{
    if (m_timer.getDurationInProgress().getMilliseconds() <= m_limit) {
        return;
    }
    logMessage(level, "Timer Warning! Name: %s\n", m_name);
    std::uint32_t before = 0;
    for (unsigned int i = 0; i < m_stepCount; ++i) {
        Step const &step = m_steps[i];
        logMessage(level, "  Step %d Time: %d Delta %d Name: %s\n", static_cast<int>(i),
                   static_cast<std::int32_t>(step.ms), static_cast<std::int32_t>(step.ms - before),
                   step.name);
        before = step.ms;
    }
}

} // namespace Qel
