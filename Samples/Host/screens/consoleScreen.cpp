#include "consoleScreen.h"

#include "style.h"

#include "Samples/Host/console.h"

#include "System/System/string.h"
#include "System/System/wString.h"

#include <algorithm>
#include <sstream>

namespace {

constexpr std::size_t keptLines = 500;

} // namespace

void ConsoleScreen::type(char32_t character)
{
    m_line += Qel::String().toString(Qel::WString(1, static_cast<wchar_t>(character))).c_str();
}

void ConsoleScreen::erase()
{
    while (!m_line.empty() && (m_line.back() & 0xC0) == 0x80) {
        m_line.pop_back();
    }
    if (!m_line.empty()) {
        m_line.pop_back();
    }
}

void ConsoleScreen::complete()
{
    m_line = console::extend(m_line);
}

void ConsoleScreen::enter()
{
    if (m_line.empty()) {
        return;
    }
    m_lines.push_back("> " + m_line);
    std::istringstream answer(console::answer(m_line));
    for (std::string line; std::getline(answer, line);) {
        m_lines.push_back(line);
    }
    while (m_lines.size() > keptLines) {
        m_lines.pop_front();
    }
    m_line.clear();
}

void ConsoleScreen::warmUp()
{
    for (char const *const typed : {"help", "list", "host.fps"}) {
        m_line = typed;
        enter();
    }
}

void ConsoleScreen::draw(Canvas &canvas, float x, float y, float, float h)
{
    float const line = canvas.lineHeight() + 2;
    canvas.text(x, y, "Type below, on any screen: \"help\" explains, tab completes a name.", style::faint);
    auto const room = static_cast<std::size_t>(std::max(h / line - 2, 0.0f));
    std::size_t const first = m_lines.size() > room ? m_lines.size() - room : 0;
    y += 2 * line;
    for (std::size_t i = first; i < m_lines.size(); ++i) {
        canvas.text(x, y, m_lines[i], m_lines[i].starts_with("> ") ? style::accent : style::text);
        y += line;
    }
}
