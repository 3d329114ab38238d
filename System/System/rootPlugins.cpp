#include "System/System/Root.h"

#include "System/System/rootManagers.h"

#include "System/System/configFile.h"
#include "System/System/exception.h"
#include "System/System/logManager.h"
#include "System/System/pluginMgr.h"

#include "Support/OS/module.h"

#include <algorithm>
#include <exception>
#include <string>

namespace Qel {

void Root::loadPlugins(String const &pluginFileName)
{
    ConfigFile config;
    config.load(pluginFileName, "=");
    String const folder = config.getSetting("PluginFolder");
    for (String const &name : config.getMultiSetting("Plugin")) {
        if (loadDependencies(name, config.getMultiSetting(name))) {
            startPlugin(folder, name);
        }
    }
}

bool Root::loadDependencies(String const &name, std::vector<String> const &dependencies)
{
    for (String const &dependency : dependencies) {
        String const file = dependency + ".dll";
        std::string why;
        void *const module = os::openModule(file.c_str(), why);
        if (module == nullptr) {
            String text;
            text.sprintf("Unable to load plugin '%s' - could not find '%s'!\n", (name + ".dll").c_str(),
                         file.c_str());
            logMessage(text, 3);
            return false;
        }
        os::closeModule(module);
    }
    return true;
}

void Root::startPlugin(String const &folder, String const &name)
{
    std::vector<Plugin *> &started = m_managers->plugins;
    Plugin *const plugin = m_managers->pluginMgr->load(folder + name + ".dll");
    if (std::find(started.begin(), started.end(), plugin) != started.end()) {
        logMessage("Plugin '" + folder + name + ".dll' is listed twice, started once\n", 3);
        return;
    }
    started.push_back(plugin);

    void *const symbol = plugin->getSymbol("dllStartPlugin");
    if (symbol == nullptr) {
        logMessage(folder + name + ".DLL" + " Cannot find symbol dllStartPlugin\n", 2);
    } else if (!runStartFunction(folder + name + ".dll", reinterpret_cast<void (*)()>(symbol))) {
        started.pop_back();
        m_managers->pluginMgr->unload(plugin);
    }
}

// What the function registered before it threw is taken back, since the code behind it is about to go.
bool Root::runStartFunction(String const &name, void (*start)())
{
    std::size_t const systemsBefore = m_renderSystems.size();
    std::vector<FrameListener *> const listenersBefore = m_frameListeners;
    std::vector<void *> const dialogsBefore = m_dialogs;
    RenderSystem *const activeBefore = m_renderSystem;
    InputReader *const deviceBefore = m_inputDevice;

    String why;
    try {
        start();
        return true;
    } catch (Exception const &exception) {
        why = exception.description;
    } catch (std::exception const &exception) {
        why = exception.what();
    } catch (...) {
        why = "unknown exception";
    }

    m_renderSystems.resize(std::min(systemsBefore, m_renderSystems.size()));
    m_frameListeners = listenersBefore;
    ++m_listenerChanges;
    m_dialogs = dialogsBefore;
    m_renderSystem = activeBefore;
    m_inputDevice = deviceBefore;
    logMessage("Plugin '" + name + "' is left out, its dllStartPlugin has thrown: " + why + "\n", 3);
    return false;
}

void Root::unloadPlugins()
{
    m_managers->stopPlugins();
}

std::vector<Plugin *> const &Root::getPlugins() const
{
    return m_managers->plugins;
}

} // namespace Qel
