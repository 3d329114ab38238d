#pragma once

#include "System/System/string.h"

namespace Qel {

/// Tells the user of a failure. Made by the platform plugin.
class QEL_API ErrorDialog {
public:
    /// Shows the dialog and returns when the user has seen it. Called by handleTerminate(), on the thread
    /// that failed, shortly before the process ends: it must not throw.
    /// @param text     what happened
    /// @param details  more about it; may be empty
    virtual void display(String text, String details) = 0;

    virtual ~ErrorDialog() = default;
};

} // namespace Qel
