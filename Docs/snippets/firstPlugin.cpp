#include "System/System/Root.h"
#include "System/System/export.h"

namespace {

class Heartbeat final : public Qel::FrameListener {
public:
    bool frameEnded(Qel::FrameEvent const &) override
    {
        ++m_frames;
        return true;
    }

private:
    unsigned m_frames = 0;
};

Heartbeat heartbeat;

} // namespace

// The managers exist: register what the plugin brings.
extern "C" QEL_API void dllStartPlugin()
{
    Qel::Root::Instance().addFrameListener(&heartbeat);
}

// The managers and the log are gone: free what the plugin made.
extern "C" QEL_API void dllStopPlugin()
{
    heartbeat = {};
}
