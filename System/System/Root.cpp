#include "System/System/Root.h"

#include "System/System/rootManagers.h"

#include "System/Patterns/tSingletonImpl.h"
#include "System/Platform/configDialog.h"
#include "System/Platform/platformManager.h"
#include "System/Platform/renderSystem.h"
#include "System/System/logManager.h"
#include "System/System/pluginMgr.h"
#include "System/Time/timer.h"
#include "System/Time/timerInit.h"

#include "Support/OS/clock.h"

#include <algorithm>
#include <exception>

namespace Qel {

template class tSingleton<Root>;

Root::Root() : Root("plugins.cfg", "debug.log", true)
{
}

Root::Root(String const &pluginFileName, String const &logFileName, bool writeLogFile)
    : m_version(1, 1, 52, nullptr), m_buildDate(nullptr, nullptr)
{
    RootManagers::clearStanding();
    std::set_terminate(&Root::termHandler);
    m_managers = std::make_unique<RootManagers>();
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

    made.logManager = std::make_unique<LogManager>();
    made.logManager->createLog(logFileName, true, true, writeLogFile);
    logMessage("Timer Initialising\n", 2);
    TimerInit::init(TIMER_MILLISECONDS);
    std::uint32_t const startStamp = os::milliseconds();
    logMessage("Qel Initialising\n", 2);
    made.globalStrings = std::make_unique<GlobalStrings>();
    made.pluginMgr = std::make_unique<PluginMgr>();
    made.platformManager = std::make_unique<PlatformManager>();
    made.timer = std::make_unique<Timer>();
    m_initTime = made.timer->getDurationInProgress();
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
}

void Root::setRenderSystem(RenderSystem *system)
{
    // A system that picks another while it shuts down must not be told a second time.
    RenderSystem *const active = m_renderSystem;
    if (active != nullptr && active != system && active != m_shuttingDown) {
        m_shuttingDown = active;
        active->shutdown();
        m_shuttingDown = nullptr;
    }
    m_renderSystem = system;
}

bool Root::showConfigDialog()
{
    PlatformManager &platform = *m_managers->platformManager;
    ConfigDialog *const dialog = platform.createConfigDialog();
    if (dialog == nullptr) {
        return false;
    }
    bool const answer = dialog->display();
    platform.destroyConfigDialog(dialog);
    return answer;
}

Timer *Root::getTimer() const
{
    return m_managers->timer.get();
}

TimerCycle Root::getTimeSinceInit()
{
    return TimerCycle::elapsed(m_initTime, m_managers->timer->getDurationInProgress());
}

char const *Root::makeGlobalString(char const *text)
{
    return text == nullptr || *text == '\0' ? "" : m_managers->globalStrings->intern(text);
}

} // namespace Qel
