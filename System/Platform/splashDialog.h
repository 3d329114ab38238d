#pragma once

#include "System/System/export.h"

namespace Qel {

/// Picture that a host shows while it starts. Made by the platform plugin; the library itself shows none.
/// Called on the main thread. Destroying the dialog takes the picture away.
/// One that overrides nothing has no picture.
class QEL_API SplashDialog {
public:
    virtual ~SplashDialog();

    /// Shows the picture and returns at once. @return false if there is nothing to show it on
    virtual bool display();

    /// Tells how far the start has come. @param fraction  0 to 1; a value outside is taken as the nearer end
    virtual void setProgress(float fraction);
};

} // namespace Qel
