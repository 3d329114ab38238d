#include "System/Platform/inputReader.h"

#include <algorithm>

namespace Qel {

InputReader::InputReader() = default;
InputReader::~InputReader() = default;

bool InputReader::initialise(void *)
{
    return false;
}

void InputReader::release()
{
}
void InputReader::capture(float)
{
}

bool InputReader::isKeyDown(KeyCode, KeyState) const
{
    return false;
}

MouseState const &InputReader::getMouseState() const
{
    return mouseState;
}

bool InputReader::getNextKey(KeyEvent &)
{
    return false;
}

bool InputReader::getNextMouse(MouseEvent &)
{
    return false;
}

void InputReader::flushBuffers()
{
}
void InputReader::feedKey(KeyEvent const &)
{
}
void InputReader::feedMouse(MouseEvent const &)
{
}
void InputReader::setMouseArea(int, int)
{
}
void InputReader::setMousePosition(int, int)
{
}
void InputReader::showPointer(bool)
{
}

bool InputReader::hasFocus() const
{
    return false;
}

WString InputReader::getLocalizedKeyName(KeyCode)
{
    return {};
}

void InputReader::setBufferedInput(bool keys, bool mouse)
{
    bufferedKeys = keys;
    bufferedMouse = mouse;
}

void InputReader::setLockRect(int x1, int y1, int x2, int y2)
{
    lockLeft = std::min(x1, x2);
    lockRight = std::max(x1, x2);
    lockTop = std::min(y1, y2);
    lockBottom = std::max(y1, y2);
    lockRectActive = true;
}

void InputReader::unsetLockRect()
{
    lockRectActive = false;
}

} // namespace Qel
