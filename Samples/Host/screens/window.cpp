#include "window.h"

#include "style.h"

#include "System/Platform/inputReader.h"
#include "System/Platform/platformManager.h"
#include "System/System/Root.h"

#include <cmath>
#include <utility>

namespace {

// Keys by their usage numbers.
constexpr unsigned keyReturn = 40;
constexpr unsigned keyEscape = 41;
constexpr unsigned keyBackspace = 42;
constexpr unsigned keyTab = 43;
constexpr unsigned keyF1 = 58;
constexpr unsigned keyEnter = 88;

constexpr float barHeight = 28;
constexpr float margin = 14;

} // namespace

Window::Window(Qel::RenderSystem &renderer, FontAtlas const &font,
               std::vector<std::unique_ptr<Screen>> screens, ConsoleScreen &console)
    : m_canvas(renderer, font), m_screens(std::move(screens)), m_isOpen(m_screens.size()), m_console(console),
      m_reader(Qel::PlatformManager::Instance().createInputReader())
{
    m_reader->initialise(nullptr); // without a window's events it tells of nothing
    m_reader->setBufferedInput(true, false);
    Qel::Root::Instance().setInputDevice(m_reader);
    show(std::size_t{0});
}

Window::~Window()
{
    Qel::Root::Instance().setInputDevice(nullptr);
    Qel::PlatformManager::Instance().destroyInputReader(m_reader);
}

void Window::show(std::size_t index)
{
    m_shown = index;
    if (!m_isOpen[index]) {
        m_isOpen[index] = true;
        m_screens[index]->open();
    }
}

bool Window::show(std::string const &name)
{
    for (std::size_t i = 0; i < m_screens.size(); ++i) {
        if (name == m_screens[i]->name()) {
            show(i);
            return true;
        }
    }
    return false;
}

void Window::warmUp()
{
    m_screens[m_shown]->warmUp();
}

bool Window::frameStarted(Qel::FrameEvent const &event)
{
    m_time += event.sameEventTime;
    m_reader->capture(m_time);
    for (Qel::KeyEvent key; m_reader->getNextKey(key);) {
        take(key);
    }
    for (std::size_t i = 0; i < m_screens.size(); ++i) {
        if (m_isOpen[i]) {
            m_screens[i]->step(event.sameEventTime);
        }
    }
    return true;
}

void Window::take(Qel::KeyEvent const &event)
{
    if (!event.down) {
        return;
    }
    switch (std::uint32_t const key = event.key) {
    case keyReturn:
    case keyEnter:
        m_console.enter();
        return;
    case keyEscape:
        Qel::Root::Instance().endMessageLoop();
        return;
    case keyBackspace:
        m_console.erase();
        return;
    case keyTab:
        if (m_console.isTyping()) {
            m_console.complete();
        } else {
            std::size_t const step = (event.modifiers & Qel::KEYMASK_SHIFT) != 0 ? m_screens.size() - 1 : 1;
            show((m_shown + step) % m_screens.size());
        }
        return;
    default:
        if (key >= keyF1 && key < keyF1 + m_screens.size()) {
            show(std::size_t{key - keyF1});
        } else if (event.character >= U' ' && event.character != 127) {
            m_console.type(event.character);
        }
    }
}

bool Window::frameRender()
{
    draw(nullptr);
    return true;
}

Qel::cImage Window::picture()
{
    Qel::cImage copy;
    return draw(&copy) ? copy : Qel::cImage();
}

bool Window::draw(Qel::cImage *copy)
{
    if (!m_canvas.begin()) {
        return false;
    }
    float const width = m_canvas.width();
    float const height = m_canvas.height();
    m_canvas.fill(0, 0, width, height, style::ground);
    constexpr float least = 150; // pixels of a side in which a screen can be shown
    float const contentHeight = height - 2 * (barHeight + margin);
    if (width >= least && contentHeight >= least) {
        m_screens[m_shown]->draw(m_canvas, margin, barHeight + margin, width - 2 * margin, contentHeight);
    }
    drawTabs();
    drawConsole();
    return m_canvas.end(copy);
}

void Window::drawTabs()
{
    m_canvas.fill(0, 0, m_canvas.width(), barHeight, style::bar);
    float const top = std::round((barHeight - m_canvas.lineHeight()) / 2);
    float x = 8;
    for (std::size_t i = 0; i < m_screens.size(); ++i) {
        std::string const key = style::format("F%zu ", i + 1);
        char const *const title = m_screens[i]->title();
        float const width = m_canvas.textWidth(key) + m_canvas.textWidth(title);
        if (i == m_shown) {
            m_canvas.fill(x - 6, 0, width + 12, barHeight, style::edge);
        }
        float const end = m_canvas.text(x, top, key, style::faint);
        m_canvas.text(end, top, title, i == m_shown ? style::accent : style::text);
        x += width + 16;
    }
}

void Window::drawConsole()
{
    float const top = m_canvas.height() - barHeight;
    float const y = top + std::round((barHeight - m_canvas.lineHeight()) / 2);
    m_canvas.fill(0, top, m_canvas.width(), barHeight, style::bar);
    float const end = m_canvas.text(m_canvas.text(8, y, "> ", style::accent), y, m_console.line());
    if (std::fmod(m_time, 1.0f) < 0.5f) {
        m_canvas.fill(end + 1, y + 1, 2, m_canvas.lineHeight() - 2, style::text);
    }
    std::string const answer = m_console.lastAnswer();
    float const left = m_canvas.width() - m_canvas.textWidth(answer) - 8;
    if (left > end + 16) {
        m_canvas.text(left, y, answer, style::faint);
    }
}
