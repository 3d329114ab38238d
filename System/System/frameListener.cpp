#include "System/System/frameListener.h"

namespace Qel {

bool FrameListener::frameStarted(FrameEvent const &)
{
    return true;
}

bool FrameListener::frameEnded(FrameEvent const &)
{
    return true;
}

bool FrameListener::frameRender()
{
    return true;
}

bool FrameListener::frameIdle(FrameEvent const &)
{
    return true;
}

} // namespace Qel
