#pragma once

#include "System/System/export.h"

#include <cstdint>

namespace Qel {

/// What a frame listener is told.
struct FrameEvent {
    /// Seconds between events of any kind, smoothed and clamped.
    float anyEventTime = 0.0f;
    /// Seconds between events of this kind, smoothed and clamped. For a started event this is the frame time
    /// that the statistics use and that particles are stepped by.
    float sameEventTime = 0.0f;
    /// Idle events only: whole seconds of wait still to go. Not set in started and ended events.
    float idleSeconds = 0.0f;
    std::uint32_t eventTag = 1; ///< 1 in every event that the engine makes
};

/// Told about each frame of Root::run(), on the thread that runs it.
///
/// Every operation may add and remove listeners, itself included: one that is removed is not told any more,
/// one that is added is told from then on if its address lies behind the one that is being told.
///
/// The destructor is not virtual, since the engine never deletes a listener: do not delete one through this
/// class. `-Wnon-virtual-dtor`, where it is asked for, names classes derived from this one: g++ all of them,
/// clang those that are not `final`. `-Wdelete-non-virtual-dtor`, which `-Wall` has, finds the mistake
/// itself.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor" // see above
class QEL_API FrameListener {
public:
    /// A frame begins. @return false to leave the loop; the listeners behind this one are then not told
    virtual bool frameStarted(FrameEvent const &event);

    /// A frame ends. @return false to leave the loop; the listeners behind this one are then not told
    virtual bool frameEnded(FrameEvent const &event);

    /// Time to draw. @return false to keep the listeners behind this one from being told; the loop goes on
    virtual bool frameRender();

    /// The loop waits for its rate, or ends a frame. @return as frameRender()
    virtual bool frameIdle(FrameEvent const &event);
};
#pragma GCC diagnostic pop

} // namespace Qel
