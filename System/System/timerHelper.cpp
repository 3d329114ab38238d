#include "System/System/timerHelper.h"

#include "System/System/logManager.h"

#include "Support/OS/debug.h"

#include <cstring>

namespace Qel {

TimerHelper::TimerHelper(char const *name) : m_name{}
{
    char const *const kept = name == nullptr ? "TimerHelper" : name;
    std::memcpy(m_name, kept, strnlen(kept, sizeof m_name));
    m_timer.start();
}

TimerHelper::~TimerHelper()
{
    m_timer.end();
    try {
        String text(m_name, strnlen(m_name, sizeof m_name));
        text += " " + String(getTiming()) + "sec\n";
        logMessage(text, 2);
    } catch (...) {
        // The end of a scope, which may be on its way out by an exception, is worth more than this line.
        os::debugOutput("TimerHelper: a time could not be logged\n");
    }
}

float TimerHelper::getTiming() const
{
    return static_cast<float>(m_timer.getDuration().getSeconds());
}

} // namespace Qel
