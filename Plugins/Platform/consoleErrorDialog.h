#pragma once

#include "System/Platform/errorDialog.h"

/// Error dialog without a desktop: the error stream.
class ConsoleErrorDialog final : public Qel::ErrorDialog {
public:
    void display(Qel::String text, Qel::String details) override;
};
