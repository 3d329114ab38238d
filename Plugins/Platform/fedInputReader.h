#pragma once

#include "System/Platform/inputReader.h"

#include <cstddef>
#include <deque>
#include <map>

/// Input reader without devices: keyboard and mouse are what the host feeds. Readers with devices derive from
/// it and feed what these tell.
class FedInputReader : public Qel::InputReader {
public:
    FedInputReader();

    bool initialise(void *window) override;
    void release() override;
    void capture(float now) override;
    bool isKeyDown(Qel::KeyCode key, Qel::KeyState state) const override;
    Qel::MouseState const &getMouseState() const override { return mouseState; }
    bool getNextKey(Qel::KeyEvent &event) override;
    bool getNextMouse(Qel::MouseEvent &event) override;
    void flushBuffers() override;
    void feedKey(Qel::KeyEvent const &event) override;
    void feedMouse(Qel::MouseEvent const &event) override;
    void setMouseArea(int width, int height) override;
    void setMousePosition(int x, int y) override;
    void showPointer(bool visible) override;
    bool hasFocus() const override;

protected:
    struct MouseChange {
        Qel::MouseEvent event;
        bool isPlaced = false; // the pointer is then at x, y; else where the move takes it
        std::int32_t x = 0;
        std::int32_t y = 0;
    };

    void feed(MouseChange const &change);
    void place(int x, int y); // moves the pointer within the lock rectangle
    void setAway(bool away);  // the pointer is outside, wherever it was seen last
    Qel::KeyEvent *lastFedKey() { return m_fedKeys.empty() ? nullptr : &m_fedKeys.back(); }

private:
    struct Key {
        bool down = false;
        bool wasDown = false; // at the update before
        bool held = false;
        float since = 0.0f; // seconds
    };

    void captureKeys(float now);
    void captureMouse(float now);
    void applyButtons(std::uint16_t buttons, float now);
    void tellOutside();

    std::map<Qel::KeyCode, Key> m_keys; // those that are down now or were at the update before
    std::deque<Qel::KeyEvent> m_fedKeys;
    std::deque<MouseChange> m_fedMouse;
    std::deque<Qel::KeyEvent> m_keyBuffer;
    std::deque<Qel::MouseEvent> m_mouseBuffer;
    int m_width = 0;
    int m_height = 0;
    bool m_away = false;
};
