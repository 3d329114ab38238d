#pragma once

#include "System/System/export.h"

#include <cstddef>
#include <cstdint>

namespace Qel {

/// Buttons of a mouse, as bits.
enum MouseMask : std::uint32_t {
    MOUSE_LEFT = 1,
    MOUSE_RIGHT = 2,
    MOUSE_MIDDLE = 4,
};

/// What can be asked about a key or a button.
enum KeyState : std::uint32_t {
    KEY_DOWN = 0,     ///< is down now
    KEY_PRESSED = 1,  ///< went down in this update
    KEY_RELEASED = 2, ///< came up in this update
    KEY_HELD = 3,     ///< is down and counts as held
};

/// The mouse as it stood at the last update: 19 words, filled by the platform's InputReader.
///
/// Buttons are counted from 0: left, right, middle, and one more. Times are seconds on the clock that the
/// reader is given.
struct QEL_API MouseState {
    std::int32_t x = 0;                  ///< pixels from the left edge of the window
    std::int32_t y = 0;                  ///< pixels from its top edge
    std::int32_t wheel = 0;              ///< notches since the reader started, away from the user counts up
    std::int32_t xMove = 0;              ///< since the update before
    std::int32_t yMove = 0;              ///< since the update before
    std::int32_t wheelMove = 0;          ///< since the update before
    std::uint16_t buttons = 0;           ///< down now: bit 0 left, bit 1 right, bit 2 middle
    std::uint16_t prevButtons = 0;       ///< down at the update before
    std::uint16_t heldButtons = 0;       ///< down for so long that they count as held
    std::uint16_t clickButtons = 0;      ///< came up in this update, before they counted as held
    std::uint16_t multiClickButtons = 0; ///< of those, the ones whose click before was close enough in time
    bool outside = false;                ///< the pointer is outside the window
    std::uint16_t clickCount[3] = {};    ///< clicks in quick succession of left, right and middle
    float holdStart[4] = {};             ///< when each button went down
    float lastClick[4] = {};             ///< when each button clicked last

    /// The button's bit of `buttons`, 0 if it is up. @param button  counted from 0
    std::uint16_t isButtonDown(unsigned char button) const;

    bool isLeftDown(KeyState state) const { return isDown(MOUSE_LEFT, state); }
    bool isRightDown(KeyState state) const { return isDown(MOUSE_RIGHT, state); }
    bool isMiddleDown(KeyState state) const { return isDown(MOUSE_MIDDLE, state); }
    bool isOutside() const { return outside; }

    std::uint16_t getClickCount(MouseMask button) const; ///< 0 unless @p button is exactly one of the three

    /// Has a button been down for longer than a click takes? For readers.
    /// @param button    0 to 3; others give false
    /// @param holdTime  seconds
    /// @param now       seconds
    bool _isHoldClick(unsigned char button, float holdTime, float now) const;

    /// Is a click at @p now close enough to the button's last one to count with it? For readers.
    /// @param button          0 to 3; others give false
    /// @param multiClickTime  seconds
    /// @param now             seconds
    bool _isMultiClick(unsigned char button, float multiClickTime, float now) const;

private:
    bool isDown(MouseMask button, KeyState state) const;
};

static_assert(sizeof(MouseState) == 19 * sizeof(std::uint32_t), "plugins fill this record");
static_assert(offsetof(MouseState, buttons) == 24 && offsetof(MouseState, outside) == 34 &&
                  offsetof(MouseState, clickCount) == 36 && offsetof(MouseState, holdStart) == 44 &&
                  offsetof(MouseState, lastClick) == 60,
              "plugins fill this record");

} // namespace Qel
