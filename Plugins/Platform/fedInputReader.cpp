#include "fedInputReader.h"

#include "Support/OS/messagePump.h"

#include <algorithm>
#include <limits>

namespace {

constexpr std::size_t feedRoom = 4096;
constexpr std::size_t bufferRoom = 256;
constexpr unsigned char clickButtons = 3; // whose clicks are counted
constexpr unsigned char timedButtons = 4;

template <class Event>
void append(std::deque<Event> &queue, Event const &event, std::size_t room)
{
    if (queue.size() == room) {
        queue.pop_front();
    }
    queue.push_back(event);
}

template <class Event>
bool takeFirst(std::deque<Event> &queue, Event &event)
{
    if (queue.empty()) {
        return false;
    }
    event = queue.front();
    queue.pop_front();
    return true;
}

std::int32_t addClamped(std::int32_t a, std::int32_t b, std::int32_t low, std::int32_t high)
{
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(std::int64_t{a} + b, std::int64_t{low}, std::int64_t{high}));
}

std::int32_t addSaturated(std::int32_t a, std::int32_t b)
{
    using Limits = std::numeric_limits<std::int32_t>;
    return addClamped(a, b, Limits::min(), Limits::max());
}

std::uint16_t bitOf(unsigned char button)
{
    return static_cast<std::uint16_t>(1u << button);
}

} // namespace

FedInputReader::FedInputReader()
{
    release();
}

bool FedInputReader::initialise(void *)
{
    release();
    return true;
}

void FedInputReader::release()
{
    mouseState = {};
    // Else a first click soon after the clock's zero would count as a second one.
    std::fill(std::begin(mouseState.lastClick), std::end(mouseState.lastClick),
              -std::numeric_limits<float>::infinity());
    keyModifiers = 0;
    m_keys.clear();
    m_fedKeys.clear();
    m_fedMouse.clear();
    m_away = false;
    flushBuffers();
}

void FedInputReader::capture(float now)
{
    captureKeys(now);
    captureMouse(now);
}

void FedInputReader::captureKeys(float now)
{
    for (auto at = m_keys.begin(); at != m_keys.end();) {
        Key &key = at->second;
        key.wasDown = key.down;
        at = key.down ? std::next(at) : m_keys.erase(at);
    }
    while (!m_fedKeys.empty()) {
        Qel::KeyEvent const event = m_fedKeys.front();
        if (event.key != Qel::KEY_NONE) { // else something was typed without a key of its own
            Key &key = m_keys[event.key];
            bool const changes = key.down != event.down;
            if (changes && key.down != key.wasDown) {
                break; // the second change of this key waits for the next update
            }
            if (changes) {
                key.down = event.down;
                key.since = now;
            }
        }
        keyModifiers = event.modifiers;
        if (bufferedKeys) {
            append(m_keyBuffer, event, bufferRoom);
        }
        m_fedKeys.pop_front();
    }
    for (auto &[code, key] : m_keys) {
        key.held = key.down && now - key.since > holdTime;
    }
}

void FedInputReader::captureMouse(float now)
{
    mouseState.prevButtons = mouseState.buttons;
    mouseState.xMove = 0;
    mouseState.yMove = 0;
    mouseState.wheelMove = 0;
    mouseState.clickButtons = 0;
    mouseState.multiClickButtons = 0;
    for (unsigned char button = 0; button < clickButtons; ++button) {
        if (!mouseState._isMultiClick(button, multiClickTime, now)) {
            mouseState.clickCount[button] = 0;
        }
    }

    while (!m_fedMouse.empty()) {
        MouseChange const change = m_fedMouse.front();
        Qel::MouseEvent const &event = change.event;
        unsigned const changes = unsigned{event.buttons} ^ mouseState.buttons;
        unsigned const changed = unsigned{mouseState.buttons} ^ mouseState.prevButtons;
        if ((changes & changed) != 0) {
            break; // the second change of a button waits for the next update
        }
        if (!freezeMouse) {
            mouseState.xMove = addSaturated(mouseState.xMove, event.xMove);
            mouseState.yMove = addSaturated(mouseState.yMove, event.yMove);
            place(change.isPlaced ? change.x : addSaturated(mouseState.x, event.xMove),
                  change.isPlaced ? change.y : addSaturated(mouseState.y, event.yMove));
        }
        mouseState.wheelMove = addSaturated(mouseState.wheelMove, event.wheelMove);
        mouseState.wheel = addSaturated(mouseState.wheel, event.wheelMove);
        applyButtons(event.buttons, now);
        if (bufferedMouse) {
            append(m_mouseBuffer, event, bufferRoom);
        }
        m_fedMouse.pop_front();
    }

    mouseState.heldButtons = 0;
    for (unsigned char button = 0; button < timedButtons; ++button) {
        if (mouseState.isButtonDown(button) != 0 && mouseState._isHoldClick(button, holdTime, now)) {
            mouseState.heldButtons = static_cast<std::uint16_t>(mouseState.heldButtons | bitOf(button));
        }
    }
}

void FedInputReader::applyButtons(std::uint16_t buttons, float now)
{
    for (unsigned char button = 0; button < timedButtons; ++button) {
        std::uint16_t const bit = bitOf(button);
        bool const isDown = (buttons & bit) != 0;
        bool const wasDown = (mouseState.buttons & bit) != 0;
        if (isDown && !wasDown) {
            mouseState.holdStart[button] = now;
        } else if (wasDown && !isDown && !mouseState._isHoldClick(button, holdTime, now)) {
            bool const again = mouseState._isMultiClick(button, multiClickTime, now);
            mouseState.clickButtons = static_cast<std::uint16_t>(mouseState.clickButtons | bit);
            if (again) {
                mouseState.multiClickButtons = static_cast<std::uint16_t>(mouseState.multiClickButtons | bit);
            }
            if (button < clickButtons) {
                std::uint16_t &count = mouseState.clickCount[button];
                count = static_cast<std::uint16_t>(again ? count + 1 : 1);
            }
            mouseState.lastClick[button] = now;
        }
    }
    mouseState.buttons = buttons;
}

bool FedInputReader::isKeyDown(Qel::KeyCode key, Qel::KeyState state) const
{
    auto const found = m_keys.find(key);
    if (found == m_keys.end()) {
        return false;
    }
    Key const &record = found->second;
    switch (state) {
    case Qel::KEY_DOWN:
        return record.down;
    case Qel::KEY_PRESSED:
        return record.down && !record.wasDown;
    case Qel::KEY_RELEASED:
        return !record.down && record.wasDown;
    case Qel::KEY_HELD:
        return record.held;
    }
    return false;
}

bool FedInputReader::getNextKey(Qel::KeyEvent &event)
{
    return takeFirst(m_keyBuffer, event);
}

bool FedInputReader::getNextMouse(Qel::MouseEvent &event)
{
    return takeFirst(m_mouseBuffer, event);
}

void FedInputReader::flushBuffers()
{
    m_keyBuffer.clear();
    m_mouseBuffer.clear();
}

void FedInputReader::feedKey(Qel::KeyEvent const &event)
{
    append(m_fedKeys, event, feedRoom);
}

void FedInputReader::feedMouse(Qel::MouseEvent const &event)
{
    feed({event});
}

void FedInputReader::feed(MouseChange const &change)
{
    append(m_fedMouse, change, feedRoom);
}

void FedInputReader::setMouseArea(int width, int height)
{
    m_width = width;
    m_height = height;
    tellOutside();
}

void FedInputReader::setMousePosition(int x, int y)
{
    place(x, y);
}

void FedInputReader::setAway(bool away)
{
    m_away = away;
    tellOutside();
}

void FedInputReader::place(int x, int y)
{
    mouseState.x = lockRectActive ? std::clamp(x, lockLeft, lockRight) : x;
    mouseState.y = lockRectActive ? std::clamp(y, lockTop, lockBottom) : y;
    tellOutside();
}

void FedInputReader::tellOutside()
{
    mouseState.outside = m_away || (m_width > 0 && (mouseState.x < 0 || mouseState.x >= m_width)) ||
                         (m_height > 0 && (mouseState.y < 0 || mouseState.y >= m_height));
}

void FedInputReader::showPointer(bool)
{
}

bool FedInputReader::hasFocus() const
{
    return os::messagePump().inForeground();
}
