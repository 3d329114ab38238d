#include "soundScreen.h"

#include "style.h"

#include "Samples/Host/soundJob.h"
#include "Samples/Host/soundTable.h"

#include "System/Sound/soundSystem.h"

#include <iterator>

void SoundScreen::open()
{
    m_scene = std::make_unique<SoundScene>(m_folder);
    m_system = m_scene->isWhole() ? openSound() : nullptr;
}

SoundScreen::~SoundScreen()
{
    if (m_system != nullptr) {
        m_system->shutdownSoundSystem();
    }
}

void SoundScreen::step(float dt)
{
    if (m_system == nullptr) {
        return;
    }
    if (m_scene->isOver()) {
        m_scene = std::make_unique<SoundScene>(m_folder); // from the start; nothing plays any more
    }
    m_scene->step(*m_system, dt);
}

void SoundScreen::warmUp()
{
    constexpr float amidTheEffects = 21;
    while (m_system != nullptr && m_scene->time() < amidTheEffects) {
        step(1 / 60.0f);
    }
}

void SoundScreen::draw(Canvas &canvas, float x, float y, float w, float)
{
    if (m_system == nullptr) {
        canvas.text(x, y, "There are no sounds beside the program, or no plugin for them.", style::faint);
        return;
    }
    float const line = canvas.lineHeight() + 4;
    canvas.text(x, y,
                style::format("%s, %.1f of %.0f s: %s", m_system->getFactoryName().c_str(),
                              static_cast<double>(m_scene->time()), static_cast<double>(SoundScene::seconds),
                              m_scene->act()));
    y += line;
    canvas.fill(x, y, w, 4, style::bar);
    canvas.fill(x, y, w * m_scene->time() / SoundScene::seconds, 4, style::accent);
    y += line;
    D3DXVECTOR3 const &at = m_scene->listener();
    canvas.text(x, y,
                style::format("%d sounds played, %d refused; the listener is at %.1f %.1f", m_scene->played(),
                              m_scene->refused(), static_cast<double>(at.x), static_cast<double>(at.z)),
                style::faint);
    y += 1.5f * line;
    float const columns[] = {x, x + 70, x + 140, x + 290, x + 480};
    char const *const heads[] = {"voice", "kind", "sound", "volume", "state"};
    for (std::size_t i = 0; i < std::size(columns); ++i) {
        canvas.text(columns[i], y, heads[i], style::accent);
    }
    y += line;
    for (VoiceRow const &row : playingVoices(*m_system)) {
        canvas.text(columns[0], y, std::to_string(row.channel));
        canvas.text(columns[1], y, row.kind);
        canvas.text(columns[2], y, row.sound);
        canvas.fill(columns[3], y + 2, 150, line - 8, style::bar);
        canvas.fill(columns[3], y + 2, 150 * row.volume, line - 8,
                    row.ducking < 1 ? style::warning : style::good);
        canvas.text(columns[4], y, row.ducking < 1 ? style::format("ducked %s", row.state) : row.state,
                    style::faint);
        y += line;
    }
}
