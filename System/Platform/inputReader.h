#pragma once

#include "System/Platform/mouseState.h"
#include "System/System/wString.h"

#include <cstdint>

namespace Qel {

/// A key by its place on the keyboard. The numbers are the plugin's; the reference plugin takes the usage
/// numbers of USB keyboards (4 for the place of "A", 40 for return, 41 for escape), so that they mean the
/// same on every machine.
enum KeyCode : std::uint32_t {
    KEY_NONE = 0, ///< no key: of a change that only types
};

/// Modifiers, as bits. Values beyond these are the plugin's.
enum KeyMask : std::uint32_t {
    KEYMASK_SHIFT = 1,
    KEYMASK_CONTROL = 2,
    KEYMASK_ALT = 4,
};

/// A change of a key.
struct KeyEvent {
    KeyCode key = KEY_NONE;
    bool down = false;           ///< went down, else came up
    char32_t character = 0;      ///< what was typed with it; 0 for nothing
    std::uint32_t modifiers = 0; ///< KeyMask bits at that moment
};

/// A change of the mouse.
struct MouseEvent {
    std::int32_t xMove = 0;     ///< pixels to the right
    std::int32_t yMove = 0;     ///< pixels downwards
    std::int32_t wheelMove = 0; ///< notches away from the user
    std::uint16_t buttons = 0;  ///< that are down from now on, as in MouseState
};

/// Keyboard and mouse. Made by the platform plugin; the host calls it once a frame and hands it to Root so
/// that others find it.
///
/// @code
/// reader->initialise(window);
/// ...
/// reader->capture(seconds); // once a frame
/// if (reader->isKeyDown(jump, KEY_PRESSED)) {
///     ...
/// }
/// @endcode
///
/// What changes between two captures is told one change per key or button and update: a key that was pressed
/// and released in between is pressed in one update and released in the next, so no press is lost.
///
/// A reader overrides what its devices can do. What it leaves out does nothing and answers false, and the
/// mouse is that of the field.
///
/// @par Ownership  Destroyed through PlatformManager::destroyInputReader().
/// @par Threads    Belongs to the main thread.
class QEL_API InputReader {
public:
    InputReader();
    virtual ~InputReader();

    InputReader(InputReader const &) = delete;
    InputReader &operator=(InputReader const &) = delete;

    /// Starts to read for a window.
    /// @param window  the window system's handle; null for none, where a reader can do without
    /// @return false if there is no device to read; the reader can still be fed
    virtual bool initialise(void *window);

    /// Ends reading, lets every key and button go and drops what has not been read. initialise() may follow.
    virtual void release();

    /// Takes in what has happened since the last call: an update.
    /// @param now  seconds on a clock that only goes forward
    virtual void capture(float now);

    /// @param state  what is asked, about the last update
    virtual bool isKeyDown(KeyCode key, KeyState state) const;

    /// The mouse at the last update. The result changes with the next one.
    virtual MouseState const &getMouseState() const;

    /// Gives the next change of a key, oldest first, if keys are buffered. A reader that nobody asks drops
    /// the oldest ones.
    /// @return false if there is none; @p event is then unchanged
    virtual bool getNextKey(KeyEvent &event);

    /// The same for the mouse.
    virtual bool getNextMouse(MouseEvent &event);

    virtual void flushBuffers(); ///< drops the buffered changes; keys and buttons stay as they are

    /// Adds a change as if a device had made it: for replays, remote control and tests. Seen by the next
    /// capture().
    virtual void feedKey(KeyEvent const &event);
    virtual void feedMouse(MouseEvent const &event); ///< the same for the mouse

    /// Tells the size of the window in pixels. The pointer is outside beyond it; 0 means no limit.
    virtual void setMouseArea(int width, int height);

    virtual void setMousePosition(int x, int y); ///< moves the pointer; the lock rectangle limits it

    virtual void showPointer(bool visible);

    virtual bool hasFocus() const; ///< do the devices act on this reader's window?

    /// The key's name in the user's language and layout.
    /// @return empty if it has none
    virtual WString getLocalizedKeyName(KeyCode key);

    /// Chooses what is kept for getNextKey() and getNextMouse(). Neither is at first.
    virtual void setBufferedInput(bool keys, bool mouse);

    void setHoldTime(float seconds) { holdTime = seconds; }             ///< 0.5 at first
    void setMultiClickTime(float seconds) { multiClickTime = seconds; } ///< a sixth of a second at first

    bool getKeyModifier(KeyMask mask) const { return (keyModifiers & mask) != 0; } ///< any of the bits
    std::uint32_t getKeyModifiers() const { return keyModifiers; }                 ///< KeyMask bits

    void setFreezeMouse(bool freeze) { freezeMouse = freeze; } ///< a frozen mouse does not move
    bool getFreezeMouse() const { return freezeMouse; }

    /// Keeps the pointer inside a rectangle given by two opposite corners, both inside, in any order.
    void setLockRect(int x1, int y1, int x2, int y2);
    void unsetLockRect(); ///< lets the pointer go; the rectangle keeps its values

protected:
    MouseState mouseState;
    std::uint32_t keyModifiers = 0; ///< KeyMask bits
    bool bufferedKeys = false;
    bool bufferedMouse = false;
    bool freezeMouse = false;
    bool lockRectActive = false;
    std::int32_t lockLeft = 0;
    std::int32_t lockRight = 0;
    std::int32_t lockTop = 0;
    std::int32_t lockBottom = 0;
    float holdTime = 0.5f;              ///< seconds
    float multiClickTime = 0.16666667f; ///< seconds
};

} // namespace Qel
