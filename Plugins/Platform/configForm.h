#pragma once

#include "canvas.h"
#include "startSettings.h"

#include <string>
#include <vector>

/// The fields of the config dialog: what they hold, how they look, and what keys and the mouse do to them.
class ConfigForm {
public:
    static constexpr int width = 460;
    static constexpr int height = 324;

    enum class Outcome { Open, Accepted, Refused };

    struct Size {
        int width;
        int height;
        bool operator==(Size const &) const = default;
    };

    /// @param sizes  to choose from; that of the settings, if it is another, is added
    ConfigForm(StartSettings const &settings, std::vector<Size> sizes);

    Outcome handle(SDL_Event const &event); ///< of the dialog's window
    void paint(Canvas &canvas) const;

    StartSettings settings() const; ///< as they are chosen now
    void say(std::string words) { m_notice = std::move(words); }

private:
    enum Field { Sizes, FullScreen, Sound, Volume, Ok, Cancel, FieldCount };

    Outcome pressKey(SDL_Keysym const &key);
    void pressMouse(int x, int y);
    Outcome releaseMouse(int x, int y);
    void turnWheel(int notches, int x, int y);
    void changeSize(int steps);
    void changeVolume(int percent);
    void dragVolume(int x);
    Outcome activate(Field field);
    bool isPressed(Field field) const { return m_pressed == field; }

    void paintSizes(Canvas &canvas) const;
    void paintSwitch(Canvas &canvas, Field field, char const *words, bool isOn) const;
    void paintVolume(Canvas &canvas) const;
    void paintButton(Canvas &canvas, Field field, char const *words) const;

    StartSettings m_settings;
    std::vector<Size> m_sizes;
    int m_chosen = 0;
    int m_firstShown = 0;
    Field m_focus = Sizes;
    Field m_pressed = FieldCount; // the mouse went down on it
    std::string m_notice;
};
