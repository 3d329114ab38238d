#include "System/System/Root.h"

#include "System/System/rootManagers.h"

#include "System/Codec/codecManager.h"
#include "System/File/archiveManager.h"
#include "System/Graphics/particle/particleSystemMgr.h"
#include "System/Platform/configDialog.h"
#include "System/Platform/platformManager.h"
#include "System/Platform/renderSystem.h"
#include "System/Sound/movieManager.h"
#include "System/Sound/soundSystemManager.h"
#include "System/System/logManager.h"
#include "System/System/pluginMgr.h"
#include "System/Time/processorInfo.h"
#include "System/Time/timer.h"
#include "System/Time/timerInit.h"

#include "Support/OS/clock.h"

#include <algorithm>
#include <exception>

namespace Qel {

template class tSingleton<Root>;

namespace {

// Does its work however the scope is left.
template <class Work>
class OnExit {
public:
    explicit OnExit(Work work) : m_work(work) {}
    ~OnExit() { m_work(); }

    OnExit(OnExit const &) = delete;
    OnExit &operator=(OnExit const &) = delete;

private:
    Work m_work;
};

} // namespace

Root::Root() : Root("plugins.cfg", "debug.log", true)
{
}

Root::Root(String const &pluginFileName, String const &logFileName, bool writeLogFile)
    : m_version(1, 1, 52, nullptr), m_buildDate(nullptr, nullptr)
{
    m_managers = std::make_unique<RootManagers>();
    RootManagers::clearStanding();
    std::set_terminate(&Root::termHandler);
    try {
        bringUp(pluginFileName, logFileName, writeLogFile);
    } catch (...) {
        RootManagers::leaveStanding(std::move(m_managers));
        throw;
    }
}

void Root::bringUp(String const &pluginFileName, String const &logFileName, bool writeLogFile)
{
    RootManagers &made = *m_managers;

    made.m_logManager = std::make_unique<LogManager>();
    made.m_logManager->createLog(logFileName, true, true, writeLogFile);
    made.m_processorInfo = std::make_unique<ProcessorInfo>();
    logMessage("Timer Initialising\n", 2);
    TimerInit::init(TIMER_MILLISECONDS);
    std::uint32_t const startStamp = os::milliseconds();
    logMessage("Qel Initialising\n", 2);
    made.m_globalStrings = std::make_unique<GlobalStrings>();
    made.m_pluginMgr = std::make_unique<PluginMgr>();
    made.m_archiveManager = std::make_unique<ArchiveManager>();
    made.m_platformManager = std::make_unique<PlatformManager>();
    made.m_particleSystemMgr = std::make_unique<ParticleSystemMgr>();
    made.m_movieManager = std::make_unique<MovieManager>();
    made.m_soundSystemManager = std::make_unique<SoundSystemManager>();
    made.m_codecManager = std::make_unique<CodecManager>();
    made.m_timer = std::make_unique<Timer>();
    m_initTime = made.m_timer->getDurationInProgress();
    loadPlugins(pluginFileName);

    std::uint32_t const spent = os::milliseconds() - startStamp;
    auto const seconds = static_cast<float>(spent * TimerInit::gClockSpeedSecondsMultiplier);
    logMessage("Qel initialized in " + String(seconds) + "sec\n", 2);
}

Root::~Root()
{
    logMessage("Qel Shutdown\n", 2);
    m_managers->takeDown();
}

void Root::addRenderSystem(RenderSystem *system)
{
    m_renderSystems.push_back(system);
    PluginMgr::registered(system, [system] {
        if (Root *const root = InstancePtr()) {
            std::erase(root->m_renderSystems, system);
            root->m_renderSystem = root->m_renderSystem == system ? nullptr : root->m_renderSystem;
        }
    });
}

void Root::setRenderSystem(RenderSystem *system)
{
    // A system that picks another while it shuts down must not be told a second time.
    RenderSystem *const active = m_renderSystem;
    if (active != nullptr && active != system && active != m_shuttingDown) {
        m_shuttingDown = active;
        OnExit const reset([this] { m_shuttingDown = nullptr; });
        active->shutdown();
    }
    m_renderSystem = system;
}

void Root::setInputDevice(InputReader *device)
{
    m_inputDevice = device;
    PluginMgr::registered(device, [device] {
        Root *const root = InstancePtr();
        if (root != nullptr && root->m_inputDevice == device) {
            root->m_inputDevice = nullptr;
        }
    });
}

bool Root::showConfigDialog()
{
    PlatformManager *const platform = m_managers->m_platformManager.get();
    ConfigDialog *const dialog = platform != nullptr ? platform->createConfigDialog() : nullptr;
    if (dialog == nullptr) {
        return false;
    }
    OnExit const destroy([platform, dialog] { platform->destroyConfigDialog(dialog); });
    return dialog->display();
}

Timer *Root::getTimer() const
{
    return m_managers->m_timer.get();
}

TimerCycle Root::getTimeSinceInit()
{
    Timer *const timer = getTimer();
    return timer != nullptr ? TimerCycle::elapsed(m_initTime, timer->getDurationInProgress()) : TimerCycle();
}

char const *Root::makeGlobalString(char const *text)
{
    GlobalStrings *const strings = m_managers->m_globalStrings.get();
    return text == nullptr || *text == '\0' || strings == nullptr ? "" : strings->intern(text);
}

} // namespace Qel
