#include "particleScreen.h"

#include "particlePicture.h"

#include "Tools/qellint/scriptCheck.h"

#include "System/Graphics/particle/particleSystemMgr.h"
#include "System/math/rand.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <utility>

namespace {

constexpr int columns = 4;
constexpr float secondsBetweenLooks = 0.25f;
constexpr unsigned int seed = 2026;

Qel::String nameOf(std::filesystem::path const &path)
{
    return Qel::String(path.string());
}

// Where the owner of the moving system is: a circle in front of the viewer.
D3DXVECTOR3 wayAt(float time)
{
    return {3 * std::cos(2 * time), 4 + 2 * std::sin(2 * time), 0};
}

} // namespace

ParticleScreen::ParticleScreen(std::string folder, bool isWatching) : m_isWatching(isWatching)
{
    std::error_code unreadable;
    std::vector<std::filesystem::path> paths;
    for (auto const &entry : std::filesystem::directory_iterator(folder, unreadable)) {
        if (entry.path().extension() == ".particle") {
            paths.push_back(entry.path());
        }
    }
    std::sort(paths.begin(), paths.end());
    Qel::cRand::seed(seed);
    for (auto const &path : paths) {
        m_scripts.push_back({path, std::filesystem::last_write_time(path, unreadable)});
        read(path);
    }
    if (m_isWatching) {
        std::printf("watching %zu scripts\n", m_scripts.size());
        std::fflush(stdout); // somebody waits for it
    }
}

ParticleScreen::~ParticleScreen()
{
    for (Show const &show : m_shows) {
        Qel::ParticleSystemMgr::Instance().destroySystem(show.system);
    }
}

void ParticleScreen::read(std::filesystem::path const &path)
{
    Qel::ParticleSystemMgr &manager = Qel::ParticleSystemMgr::Instance();
    if (!isSound(path) || !manager.parseScript(nameOf(path))) {
        return;
    }
    Qel::StringVector names;
    manager.getParticleTemplateList().split(names, "\n");
    for (Qel::String const &name : names) {
        bool const isShown = std::any_of(m_shows.begin(), m_shows.end(),
                                         [&](Show const &show) { return show.templateName == name.c_str(); });
        if (!name.empty() && !isShown) {
            m_shows.push_back({name.c_str(), path, manager.createSystem(name, name)});
        }
    }
}

bool ParticleScreen::isSound(std::filesystem::path const &path) const
{
    std::ifstream file(path, std::ios::binary);
    std::string const script{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    std::vector<Finding> const findings = checkParticleScript(script);
    for (Finding const &finding : findings) {
        std::fprintf(stderr, "%s:%u: %s\n", path.string().c_str(), finding.line, finding.text.c_str());
    }
    return static_cast<bool>(file) && findings.empty();
}

void ParticleScreen::step(float dt)
{
    m_time += dt;
    ++m_steps;
    for (Show &show : m_shows) {
        if (show.templateName == "Trail") {
            D3DXVECTOR3 const next = wayAt(m_time);
            show.system->moveParticleSystem(next - show.place);
            show.place = next;
        }
        auto const begin = std::chrono::steady_clock::now();
        show.system->update(dt);
        show.microseconds +=
            std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - begin).count();
    }
}

void ParticleScreen::warmUp(float seconds)
{
    for (int left = static_cast<int>(seconds * 60); left > 0; --left) {
        step(1 / 60.0f);
    }
}

bool ParticleScreen::frameStarted(Qel::FrameEvent const &event)
{
    step(event.sameEventTime);
    m_sinceLook += event.sameEventTime;
    if (m_isWatching && m_sinceLook > secondsBetweenLooks) {
        m_sinceLook = 0;
        look();
    }
    return true;
}

void ParticleScreen::look()
{
    for (Script &script : m_scripts) {
        std::error_code gone;
        auto const saved = std::filesystem::last_write_time(script.path, gone);
        if (gone || saved == script.saved) {
            continue;
        }
        script.saved = saved;
        if (!isSound(script.path)) {
            continue;
        }
        for (Show &show : m_shows) {
            if (show.script == script.path) {
                Qel::ParticleSystemMgr::Instance().rebind(show.templateName);
                show.system->recheck();
                std::printf("%s: '%s' is new\n", script.path.string().c_str(), show.templateName.c_str());
                std::fflush(stdout); // somebody waits for it
            }
        }
    }
}

void ParticleScreen::print() const
{
    std::printf("particles     %-12s %6s %6s %9s  %s\n", "template", "live", "quota", "us/step", "bounds");
    for (Show const &show : m_shows) {
        Qel::ParticleSystem const &system = *show.system;
        D3DXVECTOR3 const &least = system.getBoundingBox().getMinimum();
        D3DXVECTOR3 const &most = system.getBoundingBox().getMaximum();
        std::printf("              %-12s %6u %6u %9.2f  %.1f %.1f %.1f to %.1f %.1f %.1f\n",
                    show.templateName.c_str(), system.getActiveCount(), system.getParticleQuota(),
                    show.microseconds / static_cast<double>(std::max<std::uint64_t>(m_steps, 1)),
                    static_cast<double>(least.x), static_cast<double>(least.y), static_cast<double>(least.z),
                    static_cast<double>(most.x), static_cast<double>(most.y), static_cast<double>(most.z));
    }
}

bool ParticleScreen::savePicture(std::string const &path) const
{
    int const rows = (static_cast<int>(m_shows.size()) + columns - 1) / columns;
    ParticlePicture picture(columns, std::max(rows, 1));
    for (std::size_t i = 0; i < m_shows.size(); ++i) {
        Show const &show = m_shows[i];
        picture.draw(static_cast<int>(i) % columns, static_cast<int>(i) / columns, *show.system, show.place.x,
                     show.place.y);
    }
    return picture.save(path);
}
