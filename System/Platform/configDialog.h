#pragma once

#include "System/System/export.h"

namespace Qel {

/// Lets the user choose how the game is to start. Made by the platform plugin.
class QEL_API ConfigDialog {
public:
    virtual ~ConfigDialog() = default;

    /// Shows the dialog and waits until the user has answered. Called by Root::showConfigDialog() on the main
    /// thread.
    /// @return true to start, false to give up
    virtual bool display() = 0;
};

} // namespace Qel
