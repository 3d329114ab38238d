#include "frameClock.h"

#include "settings.h"

#include "System/System/Root.h"

#include <algorithm>
#include <numeric>
#include <utility>

FrameClock::FrameClock(std::function<bool()> mayEnd) : m_mayEnd(std::move(mayEnd))
{
    m_times.reserve(static_cast<std::size_t>(std::clamp<int>(settings::frames, 0, 100'000)));
}

bool FrameClock::frameStarted(Qel::FrameEvent const &)
{
    auto const now = std::chrono::steady_clock::now();
    if (m_frames > 0) {
        m_times.push_back(std::chrono::duration<double, std::milli>(now - m_lastStart).count());
    }
    m_lastStart = now;
    if (m_fps != settings::fps) {
        m_fps = settings::fps;
        Qel::Root::Instance().setMaxFrameRate(static_cast<unsigned>(std::max(0, m_fps)));
    }
    return true;
}

bool FrameClock::frameEnded(Qel::FrameEvent const &)
{
    ++m_frames;
    if (m_frames >= settings::frames && m_mayEnd()) {
        Qel::Root::Instance().endMessageLoop();
    }
    return true;
}

bool FrameClock::frameIdle(Qel::FrameEvent const &)
{
    ++m_idleEvents;
    return true;
}

FrameTimes FrameClock::times() const
{
    if (m_times.empty()) {
        return {};
    }
    std::vector<double> sorted = m_times;
    std::sort(sorted.begin(), sorted.end());
    FrameTimes result;
    result.shortest = sorted.front();
    result.longest = sorted.back();
    result.mean = std::accumulate(sorted.begin(), sorted.end(), 0.0) / static_cast<double>(sorted.size());
    result.percentile95 = sorted[(sorted.size() - 1) * 95 / 100];
    return result;
}
