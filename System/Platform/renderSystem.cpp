#include "System/Platform/renderSystem.h"

namespace Qel {

RenderSystem::RenderSystem() = default;
RenderSystem::~RenderSystem() = default;

String RenderSystem::getName() const
{
    return {};
}

bool RenderSystem::initialise(void *, int, int, bool)
{
    return false;
}

bool RenderSystem::beginFrame(int &, int &)
{
    return false;
}

bool RenderSystem::draw(RenderBatch const &)
{
    return false;
}

bool RenderSystem::endFrame(cImage *)
{
    return false;
}

void RenderSystem::shutdown()
{
}

} // namespace Qel
