#pragma once

#include "Support/export.h"

#include <memory>

namespace os {

/// A recursive lock under a name, shared by all processes of the user that open it; without a name, of this
/// process alone. When a process ends while it holds the lock, the next one that waits for it gets it.
class QEL_API SharedMutex {
public:
    virtual ~SharedMutex() = default;

    virtual void lock() = 0;
    virtual bool unlock() = 0; ///< false if the calling thread does not hold it; nothing then happens

    /// @param name  case counts; null or empty for none
    /// @return null if the system refuses
    static std::unique_ptr<SharedMutex> open(char const *name);
};

/// A wake-up that saturates, under a name and shared by all processes of the user that open it; without a
/// name, of this process alone. It and a mutex of the same name are two different objects.
class QEL_API SharedSignal {
public:
    virtual ~SharedSignal() = default;

    virtual void give() = 0;
    virtual void wait() = 0; ///< takes the signal; sleeps until there is one

    /// @param name  case counts; null or empty for none
    /// @return null if the system refuses
    static std::unique_ptr<SharedSignal> open(char const *name);
};

} // namespace os
