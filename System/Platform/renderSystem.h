#pragma once

#include "System/System/string.h"

namespace Qel {

/// What draws. A render plugin implements it and registers its object with Root::addRenderSystem() from its
/// start function; a host lists the registered ones, chooses one with Root::setRenderSystem() and drives it.
/// The library itself draws nothing: it stores the objects, and shuts one down when another takes its place.
/// So it calls shutdown() alone; what a system does not override does nothing and answers false or empty.
///
/// @par Ownership  The plugin's; it deletes the object in its stop function. Root keeps the pointer until
/// Root
///                 itself goes.
/// @par Threads    Called on the main thread.
class QEL_API RenderSystem {
public:
    RenderSystem();
    RenderSystem(RenderSystem const &) = default; ///< copies the flag
    RenderSystem &operator=(RenderSystem const &) = default;
    virtual ~RenderSystem();

    virtual String getName() const; ///< what a host shows in its list

    /// Gets ready to draw into a window.
    /// @param window  the window system's handle; null lets the system make one
    /// @param width, height  pixels
    /// @return false if that cannot be done; nothing has then changed
    virtual bool initialise(void *window, int width, int height, bool fullScreen);

    virtual void resize(int width, int height); ///< the window has a new size, in pixels

    virtual bool beginFrame(); ///< false if nothing can be drawn now; endFrame() is then not called
    virtual void endFrame();   ///< shows what was drawn, after a vertical blank if that is asked for

    /// Gives everything of the device back. Called by Root::setRenderSystem() on the system being replaced.
    /// Does nothing by default.
    virtual void shutdown();

    bool getWaitForVerticalBlank() const { return waitForVerticalBlank; }
    void setWaitForVerticalBlank(bool wait) { waitForVerticalBlank = wait; } ///< false at first

protected:
    bool waitForVerticalBlank = false;
};

} // namespace Qel
