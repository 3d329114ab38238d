#pragma once

#include <functional>

namespace os {

/// Calls that wait until a handle of the system has something to read. One thread of the process, started
/// with the first of them, does the waiting.
class ReadyCalls {
public:
    ReadyCalls() = delete;

    /// Once @p handle has something to read, queues @p call for the calling thread, as queueCompletion()
    /// does. The handle waits with one call at a time; if the calling thread ends first, the call is dropped.
    /// @return false if the system has no means left for that
    static bool add(int handle, std::function<void()> call);

    static void forget(int handle); ///< to be called before the handle is closed
};

} // namespace os
