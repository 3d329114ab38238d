#include "System/Platform/renderSystem.h"

namespace Qel {

RenderSystem::RenderSystem() = default;
RenderSystem::~RenderSystem() = default;

void RenderSystem::shutdown()
{
}

} // namespace Qel
