#pragma once

#include "configForm.h"
#include "dialogWindow.h"

#include "System/Platform/configDialog.h"

#include <optional>

/// Config dialog as a window: resolution, full screen, sound and volume, kept in the file of StartSettings.
/// Answers from that file where there is no display.
class SdlConfigDialog final : public Qel::ConfigDialog, private DialogWindow {
public:
    bool display() override;

private:
    void paint(Canvas &canvas) override { m_form->paint(canvas); }
    bool handle(SDL_Event const &event) override;
    void giveUp() override { finish(); }
    void accept();

    std::optional<ConfigForm> m_form; // while it is shown
    bool m_isAccepted = false;
};
