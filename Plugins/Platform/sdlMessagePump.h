#pragma once

#include "Support/OS/messagePump.h"

#include <SDL.h>

/// The desktop's messages: what was posted to the process's own queue, then SDL's events, if SDL's video
/// runs. It does not start that by itself.
///
/// A message made of an event has the SDL_Window in `window`, the event's type in `id` and the address of the
/// SDL_Event, good until the next peek(), in `first`.
class SdlMessagePump final : public os::MessagePump {
public:
    bool peek(os::Message &message, bool remove) override;
    bool isDialogMessage(void *dialog, os::Message const &message) override;
    void dispatch(os::Message const &message) override;
    bool inForeground() override;

private:
    SDL_Event const *eventOf(os::Message const &message) const;

    SDL_Event m_event{};
};
