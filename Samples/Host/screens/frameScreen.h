#pragma once

#include "screen.h"

/// How long the last frames took, as bars.
class FrameScreen final : public Screen {
public:
    char const *name() const override { return "frames"; }
    char const *title() const override { return "Frames"; }
    void draw(Canvas &canvas, float x, float y, float w, float h) override;
};
