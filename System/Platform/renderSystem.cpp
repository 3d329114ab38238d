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

void RenderSystem::resize(int, int)
{
}

bool RenderSystem::beginFrame()
{
    return false;
}

void RenderSystem::endFrame()
{
}
void RenderSystem::shutdown()
{
}

} // namespace Qel
