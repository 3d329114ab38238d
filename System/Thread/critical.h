#pragma once

#include "Support/OS/lock.h"
#include "System/System/export.h"

namespace Qel {

/// A lock of this process. Its owner may take it again and gives it back as often.
///
/// @code
/// cCritical m_lock;
/// cCriticalHelper const guard(&m_lock); // until the end of the scope
/// @endcode
///
/// @par Threads  Any. It must not be destroyed while it is held: debug builds stop there.
class QEL_API cCritical {
public:
    /// @param spinCount  how often a thread tries again before it sleeps; for locks held very shortly
    explicit cCritical(unsigned int spinCount = 0);
    ~cCritical();

    cCritical(cCritical const &) = delete;
    cCritical &operator=(cCritical const &) = delete;

    void on() const { m_lock.lock(); } ///< takes the lock; waits without limit

    /// Gives it back; only its owner may.
    void off() const
    {
        QEL_ASSERT(m_lock.heldByCaller());
        m_lock.unlock();
    }

private:
    mutable os::RecursiveLock m_lock;
};

/// Holds a cCritical for a scope.
class QEL_API cCriticalHelper {
public:
    /// @param critical  not owned; null for none, the helper then does nothing
    explicit cCriticalHelper(cCritical const *critical) : m_critical(critical)
    {
        if (m_critical != nullptr) {
            m_critical->on();
        }
    }
    ~cCriticalHelper()
    {
        if (m_critical != nullptr) {
            m_critical->off();
            m_critical = nullptr;
        }
    }

    cCriticalHelper(cCriticalHelper const &) = delete;
    cCriticalHelper &operator=(cCriticalHelper const &) = delete;

private:
    cCritical const *m_critical;
};

} // namespace Qel
