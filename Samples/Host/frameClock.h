#pragma once

#include "System/System/frameListener.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <vector>

/// Times of the frames that were run, in milliseconds.
struct FrameTimes {
    double shortest = 0.0;
    double mean = 0.0;
    double percentile95 = 0.0;
    double longest = 0.0;
};

/// Keeps the loop to its settings, which may change while it runs, and keeps how long each frame took,
/// waiting included.
class FrameClock final : public Qel::FrameListener {
public:
    /// @param mayEnd  asked after the last frame; one more is run as long as it says no
    explicit FrameClock(std::function<bool()> mayEnd);

    bool frameStarted(Qel::FrameEvent const &event) override;
    bool frameEnded(Qel::FrameEvent const &event) override;
    bool frameIdle(Qel::FrameEvent const &event) override;

    int frames() const { return m_frames; }
    std::uint64_t idleEvents() const { return m_idleEvents; }
    FrameTimes times() const;

private:
    std::function<bool()> m_mayEnd;
    int m_frames = 0;
    int m_fps = -1; // as Root was told
    std::uint64_t m_idleEvents = 0;
    std::chrono::steady_clock::time_point m_lastStart;
    std::vector<double> m_times; // ms, from one start to the next
};
