#include "sdlErrorDialog.h"

#include "consoleErrorDialog.h"
#include "dialogWindow.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr char const *title = "Error";

class ErrorWindow final : private DialogWindow {
public:
    /// @return false if it could not be shown
    bool show(std::string_view text);

private:
    void paint(Canvas &canvas) override;
    bool handle(SDL_Event const &event) override;
    void giveUp() override { finish(); }

    void wrap(std::string_view text);
    std::size_t fitting(std::string_view line) const;
    SDL_Rect button() const { return {width - margin - 96, m_height - margin - 32, 96, 32}; }

    static constexpr int width = 600;
    static constexpr int margin = 20;
    static constexpr std::size_t mostLines = 24;

    std::vector<std::string_view> m_lines;
    int m_height = 0;
};

bool ErrorWindow::show(std::string_view text)
{
    if (!findFont()) {
        return false;
    }
    wrap(text);
    m_height = 3 * margin + 32 + static_cast<int>(m_lines.size()) * font().getHeight();
    if (!open(title, width, m_height, 0)) {
        return false;
    }
    run();
    return true;
}

void ErrorWindow::wrap(std::string_view text)
{
    while (!text.empty() && m_lines.size() < mostLines) {
        std::size_t const length = fitting(text.substr(0, text.find('\n')));
        m_lines.push_back(text.substr(0, length));
        text.remove_prefix(length);
        if (!text.empty() && (text[0] == '\n' || text[0] == ' ')) {
            text.remove_prefix(1);
        }
    }
}

// How many characters of a line fit into the window, up to a blank if there is one.
std::size_t ErrorWindow::fitting(std::string_view line) const
{
    std::size_t blank = 0;
    int x = 0;
    for (std::size_t i = 0; i < line.size(); ++i) {
        x += textWidth(font(), line.substr(i, 1));
        if (x > width - 2 * margin) {
            return blank > 0 ? blank : std::max<std::size_t>(i, 1);
        }
        blank = line[i] == ' ' ? i : blank;
    }
    return line.size();
}

void ErrorWindow::paint(Canvas &canvas)
{
    canvas.fill({0, 0, width, m_height}, palette::background);
    int y = margin;
    for (std::string_view const line : m_lines) {
        canvas.text(margin, y, line, palette::text);
        y += canvas.lineHeight();
    }
    canvas.fill(button(), palette::accent);
    canvas.frame(button(), palette::focus, 2);
    canvas.textCentred(button(), "OK", palette::text);
}

bool ErrorWindow::handle(SDL_Event const &event)
{
    if (event.type == SDL_KEYDOWN) {
        SDL_Keycode const key = event.key.keysym.sym;
        if (key == SDLK_RETURN || key == SDLK_KP_ENTER || key == SDLK_SPACE || key == SDLK_ESCAPE) {
            finish();
        }
        return true;
    }
    if (event.type == SDL_MOUSEBUTTONUP) {
        SDL_Point const at{event.button.x, event.button.y};
        SDL_Rect const area = button();
        if (SDL_PointInRect(&at, &area)) {
            finish();
        }
        return true;
    }
    return DialogWindow::handle(event);
}

// Never throws: the program is on its way out.
bool showBox(std::string const &text) noexcept
{
    try {
        Video const video;
        return video.hasDisplay() &&
               (SDL_ShowSimpleMessageBox(SDL_MESSAGEBOX_ERROR, title, text.c_str(), nullptr) == 0 ||
                ErrorWindow().show(text));
    } catch (...) {
        return false;
    }
}

} // namespace

void SdlErrorDialog::display(Qel::String text, Qel::String details)
{
    std::string all(text.data(), text.size());
    if (!details.empty()) {
        all += "\n\n";
        all.append(details.data(), details.size());
    }
    if (!showBox(all)) {
        ConsoleErrorDialog().display(text, details);
    }
}
