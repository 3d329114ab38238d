#pragma once

#include "fedInputReader.h"
#include "video.h"

#include <bitset>
#include <mutex>
#include <optional>
#include <vector>

/// Keyboard and mouse of an SDL window: feeds itself what SDL tells of that window, beside what the host
/// feeds.
///
/// It watches the events as SDL makes them, so none is lost to whoever takes them out of SDL's queue.
class SdlInputReader final : public FedInputReader {
public:
    ~SdlInputReader() override;

    /// @param window  an SDL_Window; null for the one that has the focus, else the only one of the process
    /// @return false if there is none; the reader can still be fed
    bool initialise(void *window) override;
    void release() override;
    void capture(float now) override;
    void setMousePosition(int x, int y) override;
    void showPointer(bool visible) override;
    bool hasFocus() const override;
    Qel::WString getLocalizedKeyName(Qel::KeyCode key) override;

private:
    static int SDLCALL watch(void *reader, SDL_Event *event);
    void note(SDL_Event const &event);
    SDL_Window *window() const;
    void detach();

    void takeEvents();
    void take(SDL_Event const &event);
    void takeKey(SDL_KeyboardEvent const &event);
    void takeText(char const *text);
    void takeMotion(SDL_MouseMotionEvent const &event);
    void takeButton(SDL_MouseButtonEvent const &event);
    void takeWheel(SDL_MouseWheelEvent const &event);
    void takeWindow(SDL_WindowEvent const &event);
    void letGo(); // of all that the devices hold down
    void confinePointer();

    std::optional<Video> m_video; // while it is attached to a window
    Uint32 m_windowId = 0;

    std::mutex m_lock; // any thread may make events
    std::vector<SDL_Event> m_noted;
    bool m_hasMissed = false; // events that found no room

    std::bitset<SDL_NUM_SCANCODES> m_heldKeys;
    std::uint16_t m_heldButtons = 0;
    bool m_isTyping = false;   // the change fed last is a press, whose text may follow
    bool m_knowsPlace = false; // of the pointer, which stands at m_x, m_y
    int m_x = 0;
    int m_y = 0;
    bool m_pointerVisible = true;
    bool m_isRelative = false; // the pointer is taken away and the mouse goes on without end
    std::optional<SDL_Rect> m_confined;
};
