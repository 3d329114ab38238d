#pragma once

#include "System/System/color.h"
#include "System/System/string.h"

#include <cstddef>
#include <cstdint>

namespace Qel {

class cImage;

/// A corner of a quad or an end of a line.
struct RenderVertex {
    float x = 0;              ///< pixels from the left; 0 is the left edge of the first pixel
    float y = 0;              ///< pixels from the top
    float u = 0;              ///< where in the texture, 0 to 1 from the left; beyond, the edge counts
    float v = 0;              ///< 0 to 1 from the top
    Color color = 0xFFFFFFFF; ///< times the texture's; its alpha blends over what is there
};

/// Shapes of one kind and texture, drawn in their order.
struct RenderBatch {
    enum Shape : std::uint8_t {
        QUADS, ///< four corners each, around the edge
        LINES, ///< two ends each, one pixel wide, both drawn; the colour is that of the first
    };

    Shape shape = QUADS;
    RenderVertex const *vertices = nullptr; ///< good during the call
    std::size_t vertexCount = 0;            ///< what does not make a whole shape is left out
    cImage const *texture = nullptr;        ///< of any format, good during the call; null for plain colours

    /// Tells what the texture holds, so that a system need not take its pixels again: the same number stands
    /// for the same picture, whatever image it lies in. 0 for a picture that is new each time.
    std::uint32_t textureId = 0;
};

/// What draws. A render plugin implements it and registers its object with Root::addRenderSystem() from its
/// start function; a host lists the registered ones, chooses one with Root::setRenderSystem() and drives it.
/// The library itself draws nothing: it stores the objects, and shuts one down when another takes its place.
/// So it calls shutdown() alone; what a system does not override does nothing and answers false or empty.
///
/// @code
/// renderer->initialise(nullptr, 800, 600, false);
/// ... // in each frame:
/// int width, height;
/// if (renderer->beginFrame(width, height)) {
///     renderer->draw(batch);
///     renderer->endFrame(nullptr);
/// }
/// @endcode
///
/// @par Ownership  The plugin's; it deletes the object in its stop function. Root keeps the pointer until the
///                 plugin or Root itself goes.
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

    /// Begins a frame, all black.
    /// @param width, height  receive the size of what is drawn on, in pixels: it is the window's at this
    /// moment
    /// @return false if nothing can be drawn now; both are then unchanged, and endFrame() is not called
    virtual bool beginFrame(int &width, int &height);

    /// Draws over what is there. What lies outside is cut.
    /// @return false if something of it cannot be drawn, as without memory for a texture
    virtual bool draw(RenderBatch const &batch);

    /// Shows what was drawn, after a vertical blank if that is asked for.
    /// @param copy  becomes the finished frame, A8R8G8B8 without transparency; null for none
    /// @return false if it could not be copied or shown
    virtual bool endFrame(cImage *copy);

    /// Gives everything of the device back. Called by Root::setRenderSystem() on the system being replaced.
    /// Does nothing by default.
    virtual void shutdown();

    bool getWaitForVerticalBlank() const { return waitForVerticalBlank; }
    void setWaitForVerticalBlank(bool wait) { waitForVerticalBlank = wait; } ///< false at first

protected:
    bool waitForVerticalBlank = false;
};

} // namespace Qel
