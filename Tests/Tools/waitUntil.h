#pragma once

#include <chrono>
#include <thread>

namespace test {

/// Polls a condition that another thread will bring about.
/// @return false if it has not come true after ten seconds
template <class Condition>
bool waitUntil(Condition condition)
{
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

inline void pause(int ms)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

} // namespace test
