#include "System/System/rootManagers.h"

#include "System/Codec/codecManager.h"
#include "System/File/archiveManager.h"
#include "System/Graphics/particle/particleSystemMgr.h"
#include "System/Platform/platformManager.h"
#include "System/Sound/movieManager.h"
#include "System/Sound/soundSystemManager.h"
#include "System/System/exception.h"
#include "System/System/logManager.h"
#include "System/System/pluginMgr.h"
#include "System/Time/processorInfo.h"
#include "System/Time/timer.h"

#include "Support/OS/debug.h"

namespace Qel {

namespace {

// Plain, so that nothing happens to it at the process's end: by then the plugins' own objects are gone, and
// stopping them would touch those.
constinit RootManagers *standing = nullptr;

} // namespace

RootManagers::RootManagers() = default;

RootManagers::~RootManagers()
{
    takeDown();
}

void RootManagers::takeDown()
{
    m_timer.reset();
    m_codecManager.reset();
    m_soundSystemManager.reset();
    m_movieManager.reset();
    m_particleSystemMgr.reset();
    m_archiveManager.reset();
    m_platformManager.reset();
    m_logManager.reset();
    stopPlugins();
    m_pluginMgr.reset();
    m_globalStrings.reset();
    m_processorInfo.reset();
}

void RootManagers::stopPlugins()
{
    while (!m_plugins.empty()) {
        Plugin *const plugin = m_plugins.back();
        m_plugins.pop_back();
        try {
            if (void *const symbol = plugin->getSymbol("dllStopPlugin")) {
                reinterpret_cast<void (*)()>(symbol)();
            }
        } catch (...) {
            os::debugOutput("A plugin's dllStopPlugin has thrown an exception\n");
        }
        try {
            m_pluginMgr->unload(plugin);
        } catch (Exception const &) {
            os::debugOutput("A plugin could not be unloaded\n");
        }
    }
}

void RootManagers::leaveStanding(std::unique_ptr<RootManagers> managers)
{
    standing = managers.release();
}

void RootManagers::clearStanding()
{
    std::unique_ptr<RootManagers> const left(standing);
    standing = nullptr;
}

} // namespace Qel
