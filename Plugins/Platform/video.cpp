#include "video.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace {

// A machine without a display is told from the names of display servers: looking for one would have the
// libraries below complain on the error stream.
bool mayStart()
{
    return SDL_WasInit(SDL_INIT_VIDEO) != 0 || SDL_getenv("DISPLAY") != nullptr ||
           SDL_getenv("WAYLAND_DISPLAY") != nullptr;
}

} // namespace

Video::Video() : m_isRunning(mayStart() && SDL_InitSubSystem(SDL_INIT_VIDEO) == 0)
{
}

Video::~Video()
{
    if (m_isRunning) {
        SDL_QuitSubSystem(SDL_INIT_VIDEO);
    }
}

bool Video::hasDisplay() const
{
    return m_isRunning && videoHasDisplay();
}

bool videoHasDisplay()
{
    constexpr std::string_view desktops[] = {"x11", "wayland"};
    char const *const driver = SDL_GetCurrentVideoDriver();
    return driver != nullptr &&
           std::find(std::begin(desktops), std::end(desktops), driver) != std::end(desktops);
}

Uint32 windowIdOf(SDL_Event const &event)
{
    switch (event.type) {
    case SDL_WINDOWEVENT:
        return event.window.windowID;
    case SDL_KEYDOWN:
    case SDL_KEYUP:
        return event.key.windowID;
    case SDL_TEXTEDITING:
        return event.edit.windowID;
    case SDL_TEXTINPUT:
        return event.text.windowID;
    case SDL_MOUSEMOTION:
        return event.motion.windowID;
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP:
        return event.button.windowID;
    case SDL_MOUSEWHEEL:
        return event.wheel.windowID;
    default:
        return 0;
    }
}
