#pragma once

#include "System/Platform/errorDialog.h"

/// Error dialog as a message box: SDL's, else a window of our own where SDL has no means for one. The error
/// stream where there is no display.
class SdlErrorDialog final : public Qel::ErrorDialog {
public:
    void display(Qel::String text, Qel::String details) override;
};
