#pragma once

#include <SDL.h>

/// Keeps SDL's video running for as long as it lives: starts it unless somebody else has.
class Video {
public:
    Video();
    ~Video();

    Video(Video const &) = delete;
    Video &operator=(Video const &) = delete;

    /// Does it draw where somebody sees it? Not the console of a machine, which is not ours to take.
    bool hasDisplay() const;

private:
    bool m_isRunning;
};

/// Does SDL's video run on a desktop?
bool videoHasDisplay();

Uint32 windowIdOf(SDL_Event const &event); ///< the window it is about; 0 for none

/// Calls @p visit with each window of the process until it says true. @return did one?
template <class Visit>
bool anyWindow(Visit const &visit)
{
    // SDL has no list of them, but counts them up from 1 as they are made.
    constexpr Uint32 latest = 1024;
    for (Uint32 id = 1; id <= latest; ++id) {
        SDL_Window *const window = SDL_GetWindowFromID(id);
        if (window != nullptr && visit(window)) {
            return true;
        }
    }
    return false;
}
