#include "renderSdl.h"

#include "System/System/Root.h"

#include <memory>

namespace {

std::unique_ptr<RenderSdl> renderer;

} // namespace

extern "C" QEL_API void dllStartPlugin()
{
    renderer = std::make_unique<RenderSdl>();
    if (Qel::Root *const root = Qel::Root::InstancePtr()) {
        root->addRenderSystem(renderer.get());
    }
}

// Root may live on and must not keep the active one.
extern "C" QEL_API void dllStopPlugin()
{
    Qel::Root *const root = Qel::Root::InstancePtr();
    if (root != nullptr && root->getRenderSystem() == renderer.get()) {
        root->setRenderSystem(nullptr);
    }
    renderer.reset();
}
