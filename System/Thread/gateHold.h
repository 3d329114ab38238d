#pragma once

#include "System/System/export.h"

#include <atomic>
#include <cstddef>
#include <memory>

namespace Qel {

/// Keeps the workers that are built inside an object from stepping until the object is complete; for
/// tThreaded.
///
/// @par Threads  Made and destroyed on the thread that builds the object, in the order of a stack.
class QEL_API GateHold {
public:
    GateHold(void *object, std::size_t bytes);
    ~GateHold(); ///< the object is complete, or its constructors have thrown and it is gone

    GateHold(GateHold const &) = delete;
    GateHold &operator=(GateHold const &) = delete;

    using Released = std::shared_ptr<std::atomic<bool> const>;

    /// The hold of the calling thread in whose object @p worker lies; set once it has ended.
    /// @return null if there is none
    static Released around(void const *worker);

private:
    char const *m_begin;
    char const *m_end;
    GateHold *m_outer;
    std::shared_ptr<std::atomic<bool>> m_released = std::make_shared<std::atomic<bool>>(false);
};

} // namespace Qel
