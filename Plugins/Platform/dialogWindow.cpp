#include "dialogWindow.h"

#include "Support/Font/fontFace.h"

namespace {

constexpr char const *dataName = "qelSystem.dialog";
constexpr int fontHeight = 18; // pixels of a line
constexpr char const *families[] = {"DejaVu Sans", "Noto Sans", "Liberation Sans", "Cantarell",
                                    "Ubuntu",      "Roboto",    "FreeSans",        "Arial"};

// Holds a hint of SDL at a value and lets go of it then.
class HintScope {
public:
    HintScope(char const *name, char const *value) : m_name(name) { SDL_SetHint(name, value); }
    ~HintScope() { SDL_ResetHint(m_name); }

    HintScope(HintScope const &) = delete;
    HintScope &operator=(HintScope const &) = delete;

private:
    char const *m_name;
};

} // namespace

DialogWindow::~DialogWindow()
{
    close();
}

DialogWindow *DialogWindow::of(void *window)
{
    return window == nullptr
               ? nullptr
               : static_cast<DialogWindow *>(SDL_GetWindowData(static_cast<SDL_Window *>(window), dataName));
}

bool DialogWindow::findFont()
{
    for (char const *const family : families) {
        if (m_font.isValid()) {
            break;
        }
        if (os::FontFace::exists(family)) {
            m_font.create(family, fontHeight, 400, 0, 0, Qel::Win32Font::ANTIALIASED);
        }
    }
    return m_font.isValid();
}

bool DialogWindow::open(char const *title, int width, int height, Uint32 windowFlags)
{
    close();
    m_video.emplace();
    if (!m_video->hasDisplay() || !findFont()) {
        close();
        return false;
    }
    // Straight memory: else SDL would start a renderer for these few pixels.
    HintScope const plain(SDL_HINT_FRAMEBUFFER_ACCELERATION, "0");
    m_window =
        SDL_CreateWindow(title, SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED, width, height, windowFlags);
    if (m_window == nullptr) {
        close();
        return false;
    }
    SDL_SetWindowData(m_window, dataName, this);
    SDL_Surface const *const surface = SDL_GetWindowSurface(m_window);
    if (surface == nullptr || surface->format->BytesPerPixel != 4) {
        close();
        return false;
    }
    repaint();
    return true;
}

void DialogWindow::close()
{
    if (m_window != nullptr) {
        SDL_DestroyWindow(m_window);
        m_window = nullptr;
    }
    m_video.reset();
}

void DialogWindow::repaint()
{
    // SDL makes a new surface when the window has changed.
    if (SDL_Surface *const surface = m_window != nullptr ? SDL_GetWindowSurface(m_window) : nullptr) {
        Canvas canvas(*surface, m_font);
        paint(canvas);
        SDL_UpdateWindowSurface(m_window);
    }
}

bool DialogWindow::handle(SDL_Event const &event)
{
    if (event.type != SDL_WINDOWEVENT) {
        return false;
    }
    if (event.window.event == SDL_WINDOWEVENT_CLOSE) {
        giveUp();
        return true;
    }
    if (event.window.event == SDL_WINDOWEVENT_EXPOSED) {
        repaint();
        return true;
    }
    return false;
}

void DialogWindow::run()
{
    // Not SDL_WaitEvent(): under X11 it has a second connection send to this window, and when the window is
    // gone before the server has come to that, the error ends the program.
    constexpr Uint32 pause = 10; // ms
    m_isDone = false;
    while (!m_isDone) {
        SDL_Event event;
        if (SDL_PollEvent(&event) == 0) {
            SDL_Delay(pause);
        } else if (event.type == SDL_QUIT) {
            giveUp();
        } else if (DialogWindow *const dialog = of(SDL_GetWindowFromID(windowIdOf(event)))) {
            dialog->handle(event); // a splash may stand beside this one
        }
    }
    // Closing the last window also asks the program to end; the answer of the dialog says that.
    SDL_PumpEvents();
    SDL_FlushEvent(SDL_QUIT);
}
