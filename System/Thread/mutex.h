#pragma once

#include "Support/OS/sharedObject.h"
#include "System/System/export.h"

namespace Qel {

/// A lock that its owner may take again, and that processes share when it has a name.
///
/// A process that ends while it holds the lock gives it back by that; the next owner must expect to find
/// the guarded data half written. Names are told apart by case, and each user of the machine has names of
/// his own. Inside one process cCritical is the faster choice.
class QEL_API cMutex {
public:
    /// @param name  null or empty for a lock of this process alone; not kept
    explicit cMutex(char const *name = nullptr);
    ~cMutex();

    cMutex(cMutex const &) = delete;
    cMutex &operator=(cMutex const &) = delete;

    void on() const;  ///< takes the lock; waits without limit. Does nothing if the system refused a lock
    void off() const; ///< gives it back; does nothing on a thread that does not own it

private:
    std::unique_ptr<os::SharedMutex> m_handle;
};

/// Holds a cMutex for a scope.
class QEL_API cMutexHelper {
public:
    /// @param mutex  not owned; null for none, the helper then does nothing
    explicit cMutexHelper(cMutex *mutex);
    ~cMutexHelper();

    cMutexHelper(cMutexHelper const &) = delete;
    cMutexHelper &operator=(cMutexHelper const &) = delete;

private:
    cMutex *m_mutex;
};

} // namespace Qel
