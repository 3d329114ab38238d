#include "System/System/Root.h"

#include "System/System/rootManagers.h"

#include "System/Patterns/resourceMgr.h"
#include "System/System/pluginMgr.h"
#include "System/Time/timer.h"
#include "System/Time/timerInit.h"

#include "Support/OS/clock.h"
#include "Support/OS/debug.h"
#include "Support/OS/messagePump.h"
#include "Support/OS/thread.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>

namespace Qel {

namespace {

// The limiter's clock is the process's: it holds the rate across one run() and the next, and across Roots.
bool limiterStarted = false;
std::int64_t limiterLast = 0;
std::int64_t limiterFrequency = 0;

std::uint64_t toCounts(double value)
{
    if (!(value > 0.0)) {
        return 0;
    }
    return value < 18446744073709551616.0 ? static_cast<std::uint64_t>(value)
                                          : std::numeric_limits<std::uint64_t>::max();
}

std::uint64_t elapsed(std::uint64_t from, std::uint64_t to)
{
    return TimerCycle::elapsed(TimerCycle::fromCount(from), TimerCycle::fromCount(to)).getCount();
}

} // namespace

void Root::run()
{
    m_managers->m_timer->getDurationInProgress();
    os::Message unread;
    os::messagePump().peek(unread, false);

    while (m_running) {
        drainMessages();
        throttleInBackground();

        FrameEvent started = makeEvent(FRAME_EVENT_STARTED);
        if (!_fireFrameStarted(started)) {
            break;
        }
        _fireFrameRender();
        FrameEvent ended = makeEvent(FRAME_EVENT_ENDED);
        if (!_fireFrameEnded(ended)) {
            break;
        }
        limitFramerate();
    }
}

void Root::drainMessages()
{
    os::MessagePump &pump = os::messagePump();
    os::Message message;
    while (pump.peek(message, true)) {
        // A dialog may take itself or others off the list when it is offered a message.
        bool taken = false;
        for (std::size_t i = m_dialogs.size(); i > 0 && !taken;) {
            i = std::min(i, m_dialogs.size());
            if (i > 0) {
                --i;
                taken = pump.isDialogMessage(m_dialogs[i], message);
            }
        }
        if (!taken) {
            pump.translate(message);
            pump.dispatch(message);
        }
    }
}

void Root::throttleInBackground()
{
    if (!m_backgroundBehave) {
        return;
    }
    bool const foreground = os::messagePump().inForeground();
    if (foreground != m_foreground) {
        os::setCurrentThreadPriority(foreground ? os::ThreadPriority::Normal
                                                : os::ThreadPriority::BelowNormal);
    }
    if (!foreground) {
        os::sleepMs(m_sleepTime);
    }
    m_foreground = foreground;
}

FrameEvent Root::makeEvent(FrameEventTimeType type)
{
    std::uint64_t const now = m_managers->m_timer->getDurationInProgress().getCount();
    FrameEvent event;
    event.anyEventTime = clampTime(calculateEventTime(now, FRAME_EVENT_ANY));
    event.sameEventTime = clampTime(calculateEventTime(now, type));
    return event;
}

float Root::calculateEventTime(std::uint64_t now, FrameEventTimeType type)
{
    EventTimes &times = m_eventTimes[static_cast<std::size_t>(type)];
    times.push(now);
    if (times.size() == 1) {
        return 0.0f;
    }

    double const multiplier = TimerInit::gClockSpeedMillisecondsMultiplier;
    std::uint64_t const threshold =
        multiplier > 0.0 ? toCounts(m_frameSmoothingPeriod * 1000.0f / multiplier) : 0;
    std::size_t old = 0;
    while (old + 2 < times.size() && elapsed(times.at(old), now) > threshold) {
        ++old;
    }
    times.dropFront(old);

    double const span = static_cast<double>(elapsed(times.front(), times.back()));
    return static_cast<float>(span * TimerInit::gClockSpeedSecondsMultiplier /
                              static_cast<double>(times.size() - 1));
}

float Root::clampTime(float seconds) const
{
    if (m_minFrameTime > seconds) {
        return m_minFrameTime;
    }
    return seconds > m_maxFrameTime ? m_maxFrameTime : seconds;
}

void Root::setTimeClamp(float min, float max)
{
    m_minFrameTime = min;
    m_maxFrameTime = max;
}

void Root::clearEventTimes()
{
    for (EventTimes &times : m_eventTimes) {
        times.clear();
    }
}

float Root::getFrameRateAvg() const
{
    float sum = 0.0f;
    for (QelStats::sHistory const &frame : m_stats.history) {
        sum += frame.frameTime;
    }
    return 256.0f / sum;
}

void Root::addFrameListener(FrameListener *listener)
{
    auto const place = std::lower_bound(m_frameListeners.begin(), m_frameListeners.end(), listener,
                                        std::less<FrameListener *>());
    if (listener != nullptr && (place == m_frameListeners.end() || *place != listener)) {
        m_frameListeners.insert(place, listener);
        ++m_listenerChanges;
        PluginMgr::registered(listener, [listener] {
            if (Root *const root = InstancePtr()) {
                root->removeFrameListener(listener);
            }
        });
    }
}

void Root::removeFrameListener(FrameListener *listener)
{
    auto const place = std::find(m_frameListeners.begin(), m_frameListeners.end(), listener);
    if (place != m_frameListeners.end()) {
        m_frameListeners.erase(place);
        ++m_listenerChanges;
        PluginMgr::unregistered(listener);
    }
}

// The list may change under the walk: then the place behind the listener told last is looked up anew.
template <class Tell>
bool Root::tellListeners(Tell const &tell)
{
    std::uint32_t changes = m_listenerChanges;
    for (std::size_t i = 0; i < m_frameListeners.size();) {
        FrameListener *const listener = m_frameListeners[i];
        if (!tell(*listener)) {
            return false;
        }
        ++i;
        if (changes != m_listenerChanges) {
            changes = m_listenerChanges;
            if (!m_warnedOfChange) {
                m_warnedOfChange = true;
                os::debugOutput("Root: the frame listeners have changed inside a notification\n");
            }
            auto const next = std::upper_bound(m_frameListeners.begin(), m_frameListeners.end(), listener,
                                               std::less<FrameListener *>());
            i = static_cast<std::size_t>(next - m_frameListeners.begin());
        }
    }
    return true;
}

bool Root::_fireFrameStarted(FrameEvent &event)
{
    QelStats::sHistory *const history = m_stats.history;
    std::memmove(history, history + 1, 255 * sizeof *history);
    history[255].frameTime = event.sameEventTime;
    m_stats.frameRate = 1.0f / event.sameEventTime;
    return tellListeners([&](FrameListener &listener) { return listener.frameStarted(event); });
}

bool Root::_fireFrameEnded(FrameEvent &event)
{
    cResourceManager::resourceMgrTick();
    return tellListeners([&](FrameListener &listener) { return listener.frameEnded(event); });
}

bool Root::_fireFrameRender()
{
    incFrameCount();
    return tellListeners([](FrameListener &listener) { return listener.frameRender(); });
}

bool Root::_fireFrameIdle(FrameEvent &event)
{
    incFrameCount();
    return tellListeners([&](FrameListener &listener) { return listener.frameIdle(event); });
}

void Root::limitFramerate()
{
    bool waited = false;
    if (m_maxFrameMs != 0) {
        if (!limiterStarted) {
            limiterStarted = true;
            limiterLast = 0;
            limiterFrequency = os::performanceFrequency();
        }
        std::int64_t const rate = 1000 / m_maxFrameMs;
        std::int64_t current = os::performanceCounter();
        if (limiterLast != 0) {
            auto const ticksPerFrame = static_cast<std::int32_t>(limiterFrequency / rate);
            for (;;) {
                current = os::performanceCounter();
                // In 64 bits, so that a process that was stopped for minutes does not wait for the low half
                // of the count to come round.
                std::int64_t const gone = current - limiterLast;
                if (gone < 0 || gone >= ticksPerFrame) {
                    break;
                }
                std::int64_t const remaining = ticksPerFrame - gone;
                waited = true;
                FrameEvent idle;
                std::int64_t const wholeSeconds = remaining / limiterFrequency;
                idle.idleSeconds = static_cast<float>(wholeSeconds);
                _fireFrameIdle(idle);
                os::sleepMs(remaining > 3 * limiterFrequency / 1000 ? 1 : 0);
            }
        }
        limiterLast = current;
    }
    if (!waited) {
        FrameEvent idle;
        _fireFrameIdle(idle);
    }
}

void Root::addDialog(void *window)
{
    m_dialogs.push_back(window);
    PluginMgr::registered(window, [window] {
        if (Root *const root = InstancePtr()) {
            root->removeDialog(window);
        }
    });
}

void Root::removeDialog(void *window)
{
    auto const place = std::find(m_dialogs.begin(), m_dialogs.end(), window);
    if (place != m_dialogs.end()) {
        m_dialogs.erase(place);
        PluginMgr::unregistered(window);
    }
}

} // namespace Qel
