#pragma once

#include "System/Platform/splashDialog.h"

/// Splash without a screen.
class HiddenSplashDialog final : public Qel::SplashDialog {
public:
    bool display() override;
    void setProgress(float fraction) override;
};
