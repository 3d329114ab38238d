#pragma once

#include "consoleScreen.h"
#include "screen.h"

#include "System/System/frameListener.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace Qel {
class InputReader;
struct KeyEvent;
} // namespace Qel

/// The host's window: one of several screens, keys to switch, and the console's line at the bottom.
class Window final : public Qel::FrameListener {
public:
    static constexpr int usualWidth = 960; ///< pixels
    static constexpr int usualHeight = 640;

    /// @param renderer  initialised
    /// @param console   one of the screens
    Window(Qel::RenderSystem &renderer, FontAtlas const &font, std::vector<std::unique_ptr<Screen>> screens,
           ConsoleScreen &console);
    ~Window();

    Window(Window const &) = delete;
    Window &operator=(Window const &) = delete;

    bool show(std::string const &name); ///< @return false if there is no such screen
    void warmUp();                      ///< gets the screen to where there is something to see

    bool frameStarted(Qel::FrameEvent const &event) override;
    bool frameRender() override;

    /// Draws the screen once more.
    /// @return without pixels if it cannot be drawn
    Qel::cImage picture();

private:
    void show(std::size_t index);
    void take(Qel::KeyEvent const &event);
    bool draw(Qel::cImage *copy);
    void drawTabs();
    void drawConsole();

    Canvas m_canvas;
    std::vector<std::unique_ptr<Screen>> m_screens;
    std::vector<bool> m_isOpen;
    ConsoleScreen &m_console;
    std::size_t m_shown = 0;
    Qel::InputReader *m_reader;
    float m_time = 0; // seconds
};
