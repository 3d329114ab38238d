#pragma once

#include "System/System/frameListener.h"

#include <chrono>
#include <cstdint>
#include <vector>

/// Times of the frames that were run, in milliseconds.
struct FrameTimes {
    double shortest = 0.0;
    double mean = 0.0;
    double percentile95 = 0.0;
    double longest = 0.0;
};

/// Ends the loop after a number of frames and keeps how long each of them took, waiting included.
class FrameClock final : public Qel::FrameListener {
public:
    explicit FrameClock(unsigned frames);

    bool frameStarted(Qel::FrameEvent const &event) override;
    bool frameEnded(Qel::FrameEvent const &event) override;
    bool frameIdle(Qel::FrameEvent const &event) override;

    unsigned frames() const { return m_frames; }
    std::uint64_t idleEvents() const { return m_idleEvents; }
    FrameTimes times() const;

private:
    unsigned m_wanted;
    unsigned m_frames = 0;
    std::uint64_t m_idleEvents = 0;
    std::chrono::steady_clock::time_point m_lastStart;
    std::vector<double> m_times; // ms, from one start to the next
};
