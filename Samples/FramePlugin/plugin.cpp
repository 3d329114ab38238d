#include "System/System/Root.h"
#include "System/System/export.h"
#include "System/System/frameListener.h"
#include "System/System/logManager.h"

#include <memory>

namespace {

// Says in the log how the loop is doing, once every hundred frames.
class FrameReporter final : public Qel::FrameListener {
public:
    bool frameEnded(Qel::FrameEvent const &) override
    {
        ++m_frames;
        if (m_frames % 100 == 0) {
            Qel::logMessage(2, "FramePlugin: %u frames, %.1f a second on average\n", m_frames,
                            static_cast<double>(Qel::Root::Instance().getFrameRateAvg()));
        }
        return true;
    }

private:
    unsigned m_frames = 0;
};

std::unique_ptr<FrameReporter> reporter;

} // namespace

extern "C" QEL_API void dllStartPlugin()
{
    reporter = std::make_unique<FrameReporter>();
    Qel::Root::Instance().addFrameListener(reporter.get());
}

extern "C" QEL_API void dllStopPlugin()
{
    // The managers and the log are gone by now; Root itself is still there.
    if (Qel::Root *const root = Qel::Root::InstancePtr()) {
        root->removeFrameListener(reporter.get());
    }
    reporter.reset();
}
