#pragma once

#include "Tests/Sound/soundBytes.h"
#include "Tests/Tools/logLines.h"
#include "Tests/Tools/steeredClock.h"

#include <gtest/gtest.h>

#include <deque>

namespace test {

/// A system, sounds that outlive it, a clock and the lines that were logged.
struct SoundSystemFixture : testing::Test {
    bool said(char const *line)
    {
        lines += log.take();
        return lines.find(line) != std::string::npos;
    }
    /// The voice of this number has played to its end, and the system sees it.
    void finish(unsigned int channel)
    {
        system.channel(channel)->setFinished();
        system.update(0.01f);
    }

    SteeredClock clock;
    LogLines log{3};
    std::string lines;
    std::deque<Sound> sounds;
    TestSound system;
};

} // namespace test
