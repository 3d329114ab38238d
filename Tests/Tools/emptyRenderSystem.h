#pragma once

#include "System/Platform/renderSystem.h"

namespace test {

/// A render system that draws nothing.
class EmptyRenderSystem : public Qel::RenderSystem {
public:
    Qel::String getName() const override { return "empty"; }
    bool initialise(void *, int, int, bool) override { return true; }
    void resize(int, int) override {}
    bool beginFrame() override { return false; }
    void endFrame() override {}
};

} // namespace test
