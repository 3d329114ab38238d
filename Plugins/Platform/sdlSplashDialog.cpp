#include "sdlSplashDialog.h"

#include "System/System/Root.h"

#include <string>

namespace {

constexpr int width = 420;
constexpr int height = 96;
constexpr SDL_Rect track{24, 56, width - 48, 16};

} // namespace

SdlSplashDialog::~SdlSplashDialog()
{
    if (Qel::Root *const root = isOpen() ? Qel::Root::InstancePtr() : nullptr) {
        root->removeDialog(window());
    }
}

bool SdlSplashDialog::display()
{
    if (isOpen()) {
        return true;
    }
    if (!open("Starting", width, height, SDL_WINDOW_BORDERLESS | SDL_WINDOW_SKIP_TASKBAR)) {
        return false;
    }
    // A host may keep it up while frames run.
    if (Qel::Root *const root = Qel::Root::InstancePtr()) {
        root->addDialog(window());
    }
    return true;
}

void SdlSplashDialog::setProgress(float fraction)
{
    m_percent = fraction > 0.0f ? static_cast<int>((fraction < 1.0f ? fraction : 1.0f) * 100.0f) : 0;
    if (isOpen()) {
        SDL_PumpEvents(); // the desktop takes a window for dead that reads no events for long
        repaint();
    }
}

void SdlSplashDialog::paint(Canvas &canvas)
{
    canvas.fill({0, 0, width, height}, palette::background);
    canvas.frame({0, 0, width, height}, palette::edge);
    canvas.text(track.x, 22, "Starting", palette::text);
    canvas.textRight(track.x + track.w, 22, std::to_string(m_percent) + " %", palette::quiet);
    canvas.fill(track, palette::field);
    canvas.fill({track.x, track.y, track.w * m_percent / 100, track.h}, palette::accent);
    canvas.frame(track, palette::edge);
}
