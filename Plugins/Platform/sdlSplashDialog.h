#pragma once

#include "dialogWindow.h"

#include "System/Platform/splashDialog.h"

/// Splash as a window without a border: how far the start has come. Hidden where there is no display.
class SdlSplashDialog final : public Qel::SplashDialog, private DialogWindow {
public:
    ~SdlSplashDialog() override;

    bool display() override;
    void setProgress(float fraction) override;

private:
    void paint(Canvas &canvas) override;
    void giveUp() override {} // it goes when the start is over

    int m_percent = 0;
};
