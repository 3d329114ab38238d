#include "sdlConfigDialog.h"

#include <algorithm>

namespace {

// The modes of the first display, and what fits into it as a window.
std::vector<ConfigForm::Size> sizesOfDisplay(SDL_DisplayMode const &desktop)
{
    std::vector<ConfigForm::Size> sizes;
    for (int i = 0; i < SDL_GetNumDisplayModes(0); ++i) {
        SDL_DisplayMode mode;
        if (SDL_GetDisplayMode(0, i, &mode) == 0) {
            sizes.push_back({mode.w, mode.h});
        }
    }
    for (ConfigForm::Size const &usual : {ConfigForm::Size{640, 480},
                                          {800, 600},
                                          {1024, 768},
                                          {1280, 720},
                                          {1280, 800},
                                          {1600, 900},
                                          {1920, 1080},
                                          {2560, 1440}}) {
        if (usual.width <= desktop.w && usual.height <= desktop.h) {
            sizes.push_back(usual);
        }
    }
    return sizes;
}

} // namespace

bool SdlConfigDialog::display()
{
    StartSettings settings;
    settings.load();

    Video const video;
    SDL_DisplayMode desktop;
    if (!video.hasDisplay() || SDL_GetDesktopDisplayMode(0, &desktop) != 0) {
        return settings.start;
    }
    if (settings.width == 0 || settings.height == 0) {
        settings.width = desktop.w;
        settings.height = desktop.h;
    }
    m_form.emplace(settings, sizesOfDisplay(desktop));
    m_isAccepted = false;
    if (!open("Settings", ConfigForm::width, ConfigForm::height, 0)) {
        return settings.start;
    }
    run();
    close();
    return m_isAccepted;
}

bool SdlConfigDialog::handle(SDL_Event const &event)
{
    if (event.type == SDL_WINDOWEVENT) {
        return DialogWindow::handle(event);
    }
    switch (m_form->handle(event)) {
    case ConfigForm::Outcome::Accepted:
        accept();
        break;
    case ConfigForm::Outcome::Refused:
        giveUp();
        break;
    case ConfigForm::Outcome::Open:
        break;
    }
    repaint();
    return true;
}

void SdlConfigDialog::accept()
{
    StartSettings chosen = m_form->settings();
    chosen.start = true;
    m_isAccepted = chosen.save();
    if (m_isAccepted) {
        finish();
    } else {
        m_form->say("Cannot write platform.cfg");
    }
}
