#pragma once

#include <atomic>
#include <cstdint>

namespace os {

/// Is the memory of the word seen by this process alone?
enum class FutexScope {
    Process,
    Shared,
};

/// Sleeps while @p word holds @p expected. May come back early; the caller looks again.
/// @param timeoutMs  at most so long; 0 is without limit
void futexWait(std::atomic<std::uint32_t> &word, std::uint32_t expected, FutexScope scope,
               std::uint32_t timeoutMs = 0);

/// Wakes one thread that sleeps on @p word. Reads nothing there, so the word may be gone by now.
void futexWakeOne(std::atomic<std::uint32_t> &word, FutexScope scope);

} // namespace os
