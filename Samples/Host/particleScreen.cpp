#include "particleScreen.h"

#include "particlePicture.h"

#include "Tools/qellint/scriptCheck.h"

#include "System/File/directoryMonitor.h"
#include "System/Graphics/particle/particleSystemMgr.h"
#include "System/math/rand.h"

#include "Support/OS/thread.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <numeric>
#include <set>
#include <utility>

namespace {

constexpr int columns = 4;
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

// What the monitor has told of and nobody has looked at yet.
std::set<std::string> changedFiles;

bool noteChange(Qel::eDirectoryMonitor change, Qel::String const &fileName)
{
    if (change != Qel::DIRMON_REMOVED && change != Qel::DIRMON_RENAMED_OLD) {
        changedFiles.insert(fileName.c_str());
    }
    return true;
}

} // namespace

ParticleScreen::ParticleScreen(std::string const &folder, bool isWatching)
    : m_folder(folder),
      m_isWatching(isWatching &&
                   Qel::DirectoryMonitor::monitorDirectory(nameOf(m_folder), &noteChange, false) <
                       Qel::DirectoryMonitor::maxDirectories)
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
        read(path);
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

void ParticleScreen::stepAll(float dt)
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
        stepAll(1 / 60.0f);
    }
}

bool ParticleScreen::frameStarted(Qel::FrameEvent const &event)
{
    step(event.sameEventTime);
    return true;
}

void ParticleScreen::step(float dt)
{
    stepAll(dt);
    if (m_isWatching) {
        readChanged();
    }
}

unsigned int ParticleScreen::liveParticles() const
{
    return std::accumulate(m_shows.begin(), m_shows.end(), 0u, [](unsigned int sum, Show const &show) {
        return sum + show.system->getActiveCount();
    });
}

double ParticleScreen::microsecondsOfAStep() const
{
    double const all = std::accumulate(m_shows.begin(), m_shows.end(), 0.0,
                                       [](double sum, Show const &show) { return sum + show.microseconds; });
    return all / static_cast<double>(std::max<std::uint64_t>(m_steps, 1));
}

void ParticleScreen::readChanged()
{
    os::sleepAlertable(0); // the monitor tells what has happened
    for (std::string const &name : std::exchange(changedFiles, {})) {
        readAgain(m_folder / name);
    }
}

void ParticleScreen::readAgain(std::filesystem::path const &path)
{
    bool const isShown =
        std::any_of(m_shows.begin(), m_shows.end(), [&](Show const &show) { return show.script == path; });
    if (!isShown || !isSound(path)) {
        return;
    }
    for (Show &show : m_shows) {
        if (show.script == path) {
            Qel::ParticleSystemMgr::Instance().rebind(show.templateName);
            show.system->recheck();
            std::printf("%s: '%s' is new\n", path.string().c_str(), show.templateName.c_str());
            std::fflush(stdout); // somebody waits for it
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

Qel::cImage ParticleScreen::picture() const
{
    int const rows = (static_cast<int>(m_shows.size()) + columns - 1) / columns;
    ParticlePicture picture(columns, std::max(rows, 1));
    for (std::size_t i = 0; i < m_shows.size(); ++i) {
        Show const &show = m_shows[i];
        picture.draw(static_cast<int>(i) % columns, static_cast<int>(i) / columns, *show.system, show.place.x,
                     show.place.y);
    }
    return picture.image();
}
