#include "sdlMessagePump.h"

#include "dialogWindow.h"
#include "video.h"

#include "System/System/Root.h"

bool SdlMessagePump::peek(os::Message &message, bool remove)
{
    if (os::defaultMessagePump().peek(message, remove)) {
        return true;
    }
    if (SDL_WasInit(SDL_INIT_VIDEO) == 0) {
        return false;
    }
    if (remove) {
        if (SDL_PollEvent(&m_event) == 0) {
            return false;
        }
    } else {
        SDL_PumpEvents();
        if (SDL_PeepEvents(&m_event, 1, SDL_PEEKEVENT, SDL_FIRSTEVENT, SDL_LASTEVENT) <= 0) {
            return false;
        }
    }
    message = {SDL_GetWindowFromID(windowIdOf(m_event)), m_event.type,
               reinterpret_cast<std::uintptr_t>(&m_event), 0};
    return true;
}

SDL_Event const *SdlMessagePump::eventOf(os::Message const &message) const
{
    bool const isOurs =
        message.first == reinterpret_cast<std::uintptr_t>(&m_event) && message.id == m_event.type;
    return isOurs ? &m_event : nullptr;
}

bool SdlMessagePump::isDialogMessage(void *dialog, os::Message const &message)
{
    SDL_Event const *const event = eventOf(message);
    if (event == nullptr || dialog == nullptr || dialog != message.window) {
        return false;
    }
    DialogWindow *const shown = DialogWindow::of(message.window);
    return shown != nullptr && shown->handle(*event);
}

void SdlMessagePump::dispatch(os::Message const &message)
{
    SDL_Event const *const event = eventOf(message);
    if (event != nullptr && event->type == SDL_QUIT && !os::handleQuit()) {
        if (Qel::Root *const root = Qel::Root::InstancePtr()) {
            root->endMessageLoop();
        }
    }
}

bool SdlMessagePump::inForeground()
{
    if (!videoHasDisplay() || SDL_GetKeyboardFocus() != nullptr) {
        return true;
    }
    // A window that is hidden for now does not count, but one that was put away by its user does.
    return !anyWindow([](SDL_Window *window) {
        Uint32 const flags = SDL_GetWindowFlags(window);
        return (flags & SDL_WINDOW_HIDDEN) == 0 || (flags & SDL_WINDOW_MINIMIZED) != 0;
    });
}
