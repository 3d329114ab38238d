#include "System/Platform/mouseState.h"

namespace Qel {

namespace {

constexpr unsigned char timedButtons = 4;
constexpr unsigned char maskBits = 16;

} // namespace

std::uint16_t MouseState::isButtonDown(unsigned char button) const
{
    return button < maskBits ? static_cast<std::uint16_t>(buttons & (1u << button)) : std::uint16_t{0};
}

bool MouseState::isDown(MouseMask button, KeyState state) const
{
    bool const now = (buttons & button) != 0;
    bool const before = (prevButtons & button) != 0;
    switch (state) {
    case KEY_DOWN:
        return now;
    case KEY_PRESSED:
        return now && !before;
    case KEY_RELEASED:
        return !now && before;
    case KEY_HELD:
        return now && (heldButtons & button) != 0;
    }
    return false;
}

std::uint16_t MouseState::getClickCount(MouseMask button) const
{
    switch (button) {
    case MOUSE_LEFT:
        return clickCount[0];
    case MOUSE_RIGHT:
        return clickCount[1];
    case MOUSE_MIDDLE:
        return clickCount[2];
    }
    return 0;
}

bool MouseState::_isHoldClick(unsigned char button, float holdTime, float now) const
{
    return button < timedButtons && now - holdStart[button] > holdTime;
}

bool MouseState::_isMultiClick(unsigned char button, float multiClickTime, float now) const
{
    return button < timedButtons && multiClickTime > now - lastClick[button];
}

} // namespace Qel
