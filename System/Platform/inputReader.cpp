#include "System/Platform/inputReader.h"

#include <algorithm>

namespace Qel {

InputReader::InputReader() = default;
InputReader::~InputReader() = default;

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
