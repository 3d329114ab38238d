#pragma once

#include "System/System/export.h"

namespace Qel {

class cSubject;

/// Wants to hear of a subject's changes.
class QEL_API cObserver {
public:
    virtual ~cObserver();

    /// Called by the subject's notify(), on the thread of that call.
    virtual void update(cSubject *subject) = 0;
};

} // namespace Qel
