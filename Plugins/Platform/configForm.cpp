#include "configForm.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace {

constexpr int rowHeight = 24;
constexpr int rowsShown = 8;
constexpr int volumeStep = 5;

constexpr int left = 20;
constexpr int right = 244; // of the second column
constexpr int columnWidth = ConfigForm::width - right - left;
constexpr int fieldsTop = 42;

// In the order of the fields.
constexpr SDL_Rect areas[] = {
    {left, fieldsTop, 200, rowHeight *rowsShown}, {right, fieldsTop, columnWidth, 24},
    {right, fieldsTop + 36, columnWidth, 24},     {right, fieldsTop + 112, columnWidth, 24},
    {right, ConfigForm::height - 52, 92, 32},     {right + columnWidth - 92, ConfigForm::height - 52, 92, 32},
};

bool contains(SDL_Rect const &area, int x, int y)
{
    SDL_Point const at{x, y};
    return SDL_PointInRect(&at, &area) == SDL_TRUE;
}

} // namespace

ConfigForm::ConfigForm(StartSettings const &settings, std::vector<Size> sizes)
    : m_settings(settings), m_sizes(std::move(sizes))
{
    Size const current{settings.width, settings.height};
    m_sizes.push_back(current);
    std::sort(m_sizes.begin(), m_sizes.end(), [](Size const &a, Size const &b) {
        return std::tie(a.width, a.height) < std::tie(b.width, b.height);
    });
    m_sizes.erase(std::unique(m_sizes.begin(), m_sizes.end()), m_sizes.end());
    m_chosen = static_cast<int>(std::find(m_sizes.begin(), m_sizes.end(), current) - m_sizes.begin());
    changeSize(0);
}

StartSettings ConfigForm::settings() const
{
    StartSettings chosen = m_settings;
    chosen.width = m_sizes[static_cast<std::size_t>(m_chosen)].width;
    chosen.height = m_sizes[static_cast<std::size_t>(m_chosen)].height;
    return chosen;
}

ConfigForm::Outcome ConfigForm::handle(SDL_Event const &event)
{
    switch (event.type) {
    case SDL_KEYDOWN:
        return pressKey(event.key.keysym);
    case SDL_MOUSEBUTTONDOWN:
        if (event.button.button == SDL_BUTTON_LEFT) {
            pressMouse(event.button.x, event.button.y);
        }
        break;
    case SDL_MOUSEMOTION:
        if (isPressed(Volume)) {
            dragVolume(event.motion.x);
        }
        break;
    case SDL_MOUSEBUTTONUP:
        if (event.button.button == SDL_BUTTON_LEFT) {
            return releaseMouse(event.button.x, event.button.y);
        }
        break;
    case SDL_MOUSEWHEEL:
        turnWheel(event.wheel.y, event.wheel.mouseX, event.wheel.mouseY);
        break;
    default:
        break;
    }
    return Outcome::Open;
}

ConfigForm::Outcome ConfigForm::pressKey(SDL_Keysym const &key)
{
    int const last = static_cast<int>(m_sizes.size());
    switch (key.sym) {
    case SDLK_ESCAPE:
        return Outcome::Refused;
    case SDLK_RETURN:
    case SDLK_KP_ENTER:
        return m_focus == Cancel ? Outcome::Refused : Outcome::Accepted;
    case SDLK_SPACE:
        return activate(m_focus);
    case SDLK_TAB: {
        int const step = (key.mod & KMOD_SHIFT) != 0 ? FieldCount - 1 : 1;
        m_focus = static_cast<Field>((m_focus + step) % FieldCount);
        break;
    }
    case SDLK_UP:
    case SDLK_LEFT:
        m_focus == Volume ? changeVolume(m_settings.volume - volumeStep) : changeSize(-1);
        break;
    case SDLK_DOWN:
    case SDLK_RIGHT:
        m_focus == Volume ? changeVolume(m_settings.volume + volumeStep) : changeSize(1);
        break;
    case SDLK_PAGEUP:
        changeSize(1 - rowsShown);
        break;
    case SDLK_PAGEDOWN:
        changeSize(rowsShown - 1);
        break;
    case SDLK_HOME:
        m_focus == Volume ? changeVolume(0) : changeSize(-last);
        break;
    case SDLK_END:
        m_focus == Volume ? changeVolume(100) : changeSize(last);
        break;
    default:
        break;
    }
    return Outcome::Open;
}

void ConfigForm::pressMouse(int x, int y)
{
    for (int i = 0; i < FieldCount; ++i) {
        if (contains(areas[i], x, y)) {
            m_focus = m_pressed = static_cast<Field>(i);
        }
    }
    if (isPressed(Sizes)) {
        int const row = m_firstShown + (y - areas[Sizes].y) / rowHeight;
        if (row < static_cast<int>(m_sizes.size())) {
            m_chosen = row;
        }
    } else if (isPressed(Volume)) {
        dragVolume(x);
    }
}

// A switch or a button acts when the mouse comes up on it, so that a press can still be taken back.
ConfigForm::Outcome ConfigForm::releaseMouse(int x, int y)
{
    Field const field = std::exchange(m_pressed, FieldCount);
    return field != FieldCount && contains(areas[field], x, y) ? activate(field) : Outcome::Open;
}

void ConfigForm::turnWheel(int notches, int x, int y)
{
    if (contains(areas[Volume], x, y)) {
        changeVolume(m_settings.volume + notches * volumeStep);
    } else if (contains(areas[Sizes], x, y)) {
        int const most = std::max(0, static_cast<int>(m_sizes.size()) - rowsShown);
        m_firstShown = std::clamp(m_firstShown - std::clamp(notches, -most, most), 0, most);
    }
}

void ConfigForm::changeSize(int steps)
{
    if (m_focus == Sizes) {
        m_chosen = std::clamp(m_chosen + steps, 0, static_cast<int>(m_sizes.size()) - 1);
        m_firstShown = std::clamp(m_firstShown, std::max(0, m_chosen - rowsShown + 1), m_chosen);
    }
}

void ConfigForm::changeVolume(int percent)
{
    m_settings.volume = std::clamp(percent, 0, 100);
}

void ConfigForm::dragVolume(int x)
{
    int const room = areas[Volume].w - 1;
    changeVolume(((x - areas[Volume].x) * 100 + room / 2) / room);
}

ConfigForm::Outcome ConfigForm::activate(Field field)
{
    switch (field) {
    case FullScreen:
        m_settings.fullScreen = !m_settings.fullScreen;
        break;
    case Sound:
        m_settings.sound = !m_settings.sound;
        break;
    case Ok:
        return Outcome::Accepted;
    case Cancel:
        return Outcome::Refused;
    default:
        break;
    }
    return Outcome::Open;
}

void ConfigForm::paint(Canvas &canvas) const
{
    canvas.fill({0, 0, width, height}, palette::background);
    canvas.text(left, fieldsTop - 26, "Resolution", palette::quiet);
    paintSizes(canvas);
    paintSwitch(canvas, FullScreen, "Full screen", m_settings.fullScreen);
    paintSwitch(canvas, Sound, "Sound", m_settings.sound);
    paintVolume(canvas);
    canvas.text(left, areas[Ok].y - 26, m_notice, palette::alarm);
    paintButton(canvas, Ok, "OK");
    paintButton(canvas, Cancel, "Cancel");
}

void ConfigForm::paintSizes(Canvas &canvas) const
{
    SDL_Rect const &area = areas[Sizes];
    canvas.fill(area, palette::field);
    int const count = static_cast<int>(m_sizes.size());
    for (int row = m_firstShown; row < std::min(count, m_firstShown + rowsShown); ++row) {
        int const y = area.y + (row - m_firstShown) * rowHeight;
        if (row == m_chosen) {
            canvas.fill({area.x, y, area.w, rowHeight}, palette::accent);
        }
        Size const &size = m_sizes[static_cast<std::size_t>(row)];
        canvas.text(area.x + 10, y + (rowHeight - canvas.lineHeight()) / 2,
                    std::to_string(size.width) + " x " + std::to_string(size.height), palette::text);
    }
    if (count > rowsShown) {
        int const thumb = std::max(12, area.h * rowsShown / count);
        int const y = area.y + (area.h - thumb) * m_firstShown / (count - rowsShown);
        canvas.fill({area.x + area.w - 7, y, 6, thumb}, palette::edge);
    }
    canvas.frame(area, m_focus == Sizes ? palette::focus : palette::edge, m_focus == Sizes ? 2 : 1);
}

void ConfigForm::paintSwitch(Canvas &canvas, Field field, char const *words, bool isOn) const
{
    SDL_Rect const &area = areas[field];
    SDL_Rect const box{area.x, area.y + 2, 20, 20};
    canvas.fill(box, palette::field);
    if (isOn) {
        canvas.fill({box.x + 5, box.y + 5, 10, 10}, palette::focus);
    }
    canvas.frame(box, m_focus == field ? palette::focus : palette::edge, m_focus == field ? 2 : 1);
    canvas.text(box.x + box.w + 10, area.y + (area.h - canvas.lineHeight()) / 2, words, palette::text);
}

void ConfigForm::paintVolume(Canvas &canvas) const
{
    SDL_Rect const &area = areas[Volume];
    canvas.text(area.x, area.y - 26, "Volume", m_settings.sound ? palette::text : palette::quiet);
    canvas.textRight(area.x + area.w, area.y - 26, std::to_string(m_settings.volume) + " %", palette::quiet);
    SDL_Rect const track{area.x, area.y + 9, area.w, 6};
    int const knob = (area.w - 12) * m_settings.volume / 100;
    canvas.fill(track, palette::field);
    canvas.fill({track.x, track.y, knob, track.h}, m_settings.sound ? palette::accent : palette::edge);
    canvas.fill({area.x + knob, area.y + 2, 12, 20}, m_focus == Volume ? palette::focus : palette::quiet);
}

void ConfigForm::paintButton(Canvas &canvas, Field field, char const *words) const
{
    SDL_Rect const &area = areas[field];
    canvas.fill(area, isPressed(field) ? palette::field : field == Ok ? palette::accent : palette::edge);
    if (m_focus == field) {
        canvas.frame(area, palette::focus, 2);
    }
    canvas.textCentred(area, words, palette::text);
}
