#pragma once

#include "Support/OS/sharedObject.h"
#include "System/System/export.h"

namespace Qel {

/// A wake-up for one waiter. Given while one is pending, it is lost, not counted.
///
/// With a name it is shared by all processes of the user that open it. A cMutex of the same name is another
/// object.
class QEL_API cSignal {
public:
    /// @param name  null or empty for a signal of this process alone; not kept, not changed
    explicit cSignal(char *name = nullptr);
    ~cSignal();

    cSignal(cSignal const &) = delete;
    cSignal &operator=(cSignal const &) = delete;

    void signal(); ///< lets one waiter through, now or later
    void
    wait_signal(); ///< takes the signal; waits without limit. Comes back at once if there is no signal object

private:
    std::unique_ptr<os::SharedSignal> m_handle;
};

} // namespace Qel
