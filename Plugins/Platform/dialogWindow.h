#pragma once

#include "canvas.h"
#include "video.h"

#include <optional>

/// A window of this plugin's own, drawn in memory. It stands in the middle of the screen, keeps its size and
/// works without any renderer.
///
/// Its events come from whoever takes them out of SDL's queue: run() while it is modal, else the message
/// pump.
class DialogWindow {
public:
    DialogWindow() = default;
    virtual ~DialogWindow();

    DialogWindow(DialogWindow const &) = delete;
    DialogWindow &operator=(DialogWindow const &) = delete;

    static DialogWindow *of(void *window); ///< the dialog that an SDL_Window shows; null for others' windows

    /// Takes an event of this window. @return false if it means nothing here
    virtual bool handle(SDL_Event const &event);

protected:
    /// @return false without a display or a font to write with
    bool open(char const *title, int width, int height, Uint32 windowFlags);
    void close();
    bool isOpen() const { return m_window != nullptr; }
    SDL_Window *window() const { return m_window; }
    Qel::Win32Font const &font() const { return m_font; }

    bool findFont(); ///< before open(), for who measures texts first. @return false if there is none

    void repaint();
    virtual void paint(Canvas &canvas) = 0;

    void run(); ///< shows it until finish(); events of others' windows are passed over
    void finish() { m_isDone = true; }
    virtual void giveUp() = 0; ///< the user has closed the window, or the program is to end

private:
    std::optional<Video> m_video;
    SDL_Window *m_window = nullptr;
    Qel::Win32Font m_font;
    bool m_isDone = false;
};
