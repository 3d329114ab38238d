#include "sdlInputReader.h"

#include "dialogWindow.h"

#include <algorithm>

namespace {

constexpr std::size_t room = 4096; // events between two captures
constexpr std::uint32_t logoKey = 8;

std::uint32_t modifiersOf(int mod)
{
    return ((mod & KMOD_SHIFT) != 0 ? Qel::KEYMASK_SHIFT : 0u) |
           ((mod & KMOD_CTRL) != 0 ? Qel::KEYMASK_CONTROL : 0u) |
           ((mod & KMOD_ALT) != 0 ? Qel::KEYMASK_ALT : 0u) | ((mod & KMOD_GUI) != 0 ? logoKey : 0u);
}

std::uint16_t bitOfButton(Uint8 button)
{
    switch (button) {
    case SDL_BUTTON_LEFT:
        return Qel::MOUSE_LEFT;
    case SDL_BUTTON_RIGHT:
        return Qel::MOUSE_RIGHT;
    case SDL_BUTTON_MIDDLE:
        return Qel::MOUSE_MIDDLE;
    default:
        return button <= 16 ? static_cast<std::uint16_t>(1u << (button - 1)) : std::uint16_t{0};
    }
}

// The one with the focus, else the only one. Dialogs do not count.
SDL_Window *windowToRead()
{
    SDL_Window *only = SDL_GetKeyboardFocus();
    if (only != nullptr && DialogWindow::of(only) == nullptr) {
        return only;
    }
    only = nullptr;
    bool const several = anyWindow([&only](SDL_Window *window) {
        if (DialogWindow::of(window) != nullptr) {
            return false;
        }
        bool const isSecond = only != nullptr;
        only = window;
        return isSecond;
    });
    return several ? nullptr : only;
}

// A coordinate that a window can have: window systems count in 16 bits.
int toWindow(std::int32_t coordinate)
{
    constexpr std::int32_t most = 32767;
    return std::clamp(coordinate, -most, most);
}

Qel::WString wide(char const *text)
{
    Qel::WString result;
    result.toString(Qel::String(text));
    return result;
}

} // namespace

SdlInputReader::~SdlInputReader()
{
    detach();
}

bool SdlInputReader::initialise(void *windowToUse)
{
    release();
    if (SDL_WasInit(SDL_INIT_VIDEO) == 0) {
        return false; // so there is no window
    }
    SDL_Window *const attached =
        windowToUse != nullptr ? static_cast<SDL_Window *>(windowToUse) : windowToRead();
    Uint32 const id = attached != nullptr ? SDL_GetWindowID(attached) : 0;
    if (id == 0) {
        return false;
    }
    m_noted.reserve(room);
    m_windowId = id;
    m_video.emplace();
    SDL_StartTextInput();
    showPointer(m_pointerVisible);

    int width = 0;
    int height = 0;
    SDL_GetWindowSize(attached, &width, &height);
    setMouseArea(width, height);
    bool const isInside = SDL_GetMouseFocus() == attached;
    if (isInside) {
        SDL_GetMouseState(&m_x, &m_y);
        place(m_x, m_y);
    }
    m_knowsPlace = isInside;
    setAway(!isInside && videoHasDisplay());
    SDL_AddEventWatch(watch, this);
    return true;
}

void SdlInputReader::release()
{
    detach();
    FedInputReader::release();
}

void SdlInputReader::detach()
{
    if (!m_video) {
        return;
    }
    SDL_DelEventWatch(watch, this);
    if (m_isRelative) {
        SDL_SetRelativeMouseMode(SDL_FALSE);
    }
    if (SDL_Window *const left = m_confined ? window() : nullptr) {
        SDL_SetWindowMouseRect(left, nullptr);
    }
    if (!m_pointerVisible) {
        SDL_ShowCursor(SDL_ENABLE);
    }
    m_isRelative = false;
    m_confined.reset();
    m_windowId = 0;
    m_noted.clear();
    m_hasMissed = false;
    m_heldKeys.reset();
    m_heldButtons = 0;
    m_isTyping = false;
    m_knowsPlace = false;
    m_video.reset();
}

SDL_Window *SdlInputReader::window() const
{
    return m_video ? SDL_GetWindowFromID(m_windowId) : nullptr;
}

int SdlInputReader::watch(void *reader, SDL_Event *event)
{
    static_cast<SdlInputReader *>(reader)->note(*event);
    return 0;
}

void SdlInputReader::note(SDL_Event const &event)
{
    if (windowIdOf(event) != m_windowId) {
        return;
    }
    std::lock_guard const guard(m_lock);
    if (m_noted.size() < room) {
        m_noted.push_back(event);
    } else {
        m_hasMissed = true;
    }
}

void SdlInputReader::capture(float now)
{
    if (m_video) {
        confinePointer();
        SDL_PumpEvents();
        takeEvents();
    }
    FedInputReader::capture(now);
}

void SdlInputReader::takeEvents()
{
    std::lock_guard const guard(m_lock);
    for (SDL_Event const &event : m_noted) {
        take(event);
    }
    m_noted.clear();
    if (m_hasMissed) {
        m_hasMissed = false;
        letGo(); // else a key whose release was missed would stay down
    }
}

void SdlInputReader::take(SDL_Event const &event)
{
    switch (event.type) {
    case SDL_KEYDOWN:
    case SDL_KEYUP:
        takeKey(event.key);
        break;
    case SDL_TEXTINPUT:
        takeText(event.text.text);
        break;
    case SDL_MOUSEMOTION:
        takeMotion(event.motion);
        break;
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP:
        takeButton(event.button);
        break;
    case SDL_MOUSEWHEEL:
        takeWheel(event.wheel);
        break;
    case SDL_WINDOWEVENT:
        takeWindow(event.window);
        break;
    default:
        break;
    }
}

void SdlInputReader::takeKey(SDL_KeyboardEvent const &event)
{
    auto const code = static_cast<std::size_t>(event.keysym.scancode);
    if (code == SDL_SCANCODE_UNKNOWN || code >= m_heldKeys.size()) {
        return;
    }
    bool const down = event.type == SDL_KEYDOWN;
    m_heldKeys.set(code, down);
    feedKey({static_cast<Qel::KeyCode>(code), down, 0, modifiersOf(event.keysym.mod)});
    m_isTyping = down;
}

// SDL tells what a press has typed right behind the press. More than one character, or what an input method
// types later, comes as changes of no key.
void SdlInputReader::takeText(char const *text)
{
    for (wchar_t const letter : wide(text)) {
        auto const character = static_cast<char32_t>(letter);
        if (Qel::KeyEvent *const press = m_isTyping ? lastFedKey() : nullptr) {
            press->character = character;
        } else {
            feedKey({Qel::KEY_NONE, true, character, modifiersOf(SDL_GetModState())});
        }
        m_isTyping = false;
    }
}

void SdlInputReader::takeMotion(SDL_MouseMotionEvent const &event)
{
    MouseChange change;
    change.event.buttons = m_heldButtons;
    if (m_isRelative) {
        change.event.xMove = event.xrel;
        change.event.yMove = event.yrel;
    } else {
        change.event.xMove = m_knowsPlace ? event.x - m_x : 0;
        change.event.yMove = m_knowsPlace ? event.y - m_y : 0;
        change.isPlaced = true;
        change.x = m_x = event.x;
        change.y = m_y = event.y;
        m_knowsPlace = true;
    }
    feed(change);
}

void SdlInputReader::takeButton(SDL_MouseButtonEvent const &event)
{
    std::uint16_t const bit = bitOfButton(event.button);
    unsigned const buttons =
        event.state == SDL_PRESSED ? unsigned{m_heldButtons} | bit : m_heldButtons & ~unsigned{bit};
    if (buttons != m_heldButtons) {
        m_heldButtons = static_cast<std::uint16_t>(buttons);
        feedMouse({0, 0, 0, m_heldButtons});
    }
}

void SdlInputReader::takeWheel(SDL_MouseWheelEvent const &event)
{
    bool const isFlipped = event.direction == SDL_MOUSEWHEEL_FLIPPED;
    if (event.y != 0) {
        feedMouse({0, 0, isFlipped ? -event.y : event.y, m_heldButtons});
    }
}

void SdlInputReader::takeWindow(SDL_WindowEvent const &event)
{
    switch (event.event) {
    case SDL_WINDOWEVENT_SIZE_CHANGED:
        setMouseArea(event.data1, event.data2);
        break;
    case SDL_WINDOWEVENT_ENTER:
        setAway(false);
        break;
    case SDL_WINDOWEVENT_LEAVE:
        setAway(true);
        m_knowsPlace = false; // where it comes back is no move
        break;
    case SDL_WINDOWEVENT_FOCUS_LOST:
        letGo();
        break;
    default:
        break;
    }
}

void SdlInputReader::letGo()
{
    for (std::size_t code = 0; code < m_heldKeys.size(); ++code) {
        if (m_heldKeys.test(code)) {
            feedKey({static_cast<Qel::KeyCode>(code), false, 0, 0});
        }
    }
    m_heldKeys.reset();
    m_isTyping = false;
    if (m_heldButtons != 0) {
        m_heldButtons = 0;
        feedMouse({0, 0, 0, 0});
    }
}

// The base class keeps the position within the lock rectangle. Here the pointer itself is kept there, too, so
// that the two do not part; and where nobody sees it, the mouse moves on when the pointer could not.
void SdlInputReader::confinePointer()
{
    SDL_Window *const confined = window();
    if (confined == nullptr) {
        return;
    }
    bool const relative = lockRectActive && !m_pointerVisible;
    if (relative != m_isRelative) {
        m_isRelative = relative;
        m_knowsPlace = false;
        SDL_SetRelativeMouseMode(relative ? SDL_TRUE : SDL_FALSE);
        if (!relative) {
            SDL_WarpMouseInWindow(confined, toWindow(mouseState.x), toWindow(mouseState.y));
        }
    }
    std::optional<SDL_Rect> area;
    if (lockRectActive && !relative) {
        int const left = toWindow(lockLeft);
        int const top = toWindow(lockTop);
        area = SDL_Rect{left, top, toWindow(lockRight) - left + 1, toWindow(lockBottom) - top + 1};
    }
    bool const isSame = area.has_value() == m_confined.has_value() &&
                        (!area || SDL_RectEquals(&*area, &*m_confined) == SDL_TRUE);
    if (!isSame) {
        m_confined = area;
        SDL_SetWindowMouseRect(confined, area ? &*area : nullptr);
    }
}

void SdlInputReader::setMousePosition(int x, int y)
{
    place(x, y);
    SDL_Window *const target = window();
    if (target != nullptr && !m_isRelative) {
        m_x = toWindow(mouseState.x);
        m_y = toWindow(mouseState.y);
        m_knowsPlace = true;
        SDL_WarpMouseInWindow(target, m_x, m_y);
    }
}

void SdlInputReader::showPointer(bool visible)
{
    m_pointerVisible = visible;
    if (m_video) {
        SDL_ShowCursor(visible ? SDL_ENABLE : SDL_DISABLE);
    }
}

bool SdlInputReader::hasFocus() const
{
    SDL_Window *const own = window();
    return own != nullptr ? SDL_GetKeyboardFocus() == own : FedInputReader::hasFocus();
}

Qel::WString SdlInputReader::getLocalizedKeyName(Qel::KeyCode key)
{
    if (key == Qel::KEY_NONE || std::uint32_t{key} >= std::uint32_t{SDL_NUM_SCANCODES}) {
        return {};
    }
    auto const code = static_cast<SDL_Scancode>(key);
    // The layout is known while SDL's video runs; before, there is the name of the place.
    char const *const name = SDL_GetKeyName(SDL_GetKeyFromScancode(code));
    return wide(name[0] != '\0' ? name : SDL_GetScancodeName(code));
}
