#include "System/System/Root.h"

#include "System/System/rootManagers.h"

#include "System/Platform/platformManager.h"
#include "System/System/configFile.h"
#include "System/System/exception.h"
#include "System/System/logManager.h"
#include "System/System/pluginMgr.h"

#include "Support/OS/messagePump.h"
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
    std::vector<Plugin *> &started = m_managers->m_plugins;
    Plugin *const plugin = m_managers->m_pluginMgr->load(folder + name + ".dll");
    if (std::find(started.begin(), started.end(), plugin) != started.end() ||
        plugin->getName() == PlatformManager::pluginName) {
        logMessage("Plugin '" + plugin->getName() + "' is loaded already\n", 3);
        return;
    }
    started.push_back(plugin);

    void *const symbol = plugin->getSymbol("dllStartPlugin");
    if (symbol == nullptr) {
        logMessage(folder + name + ".DLL" + " Cannot find symbol dllStartPlugin\n", 2);
    } else if (!runStartFunction(*plugin, folder + name + ".dll", reinterpret_cast<void (*)()>(symbol))) {
        std::erase(started, plugin);
        m_managers->m_pluginMgr->unload(plugin);
    }
}

// What the function registered before it threw is taken back, since the code behind it is about to go.
bool Root::runStartFunction(Plugin &plugin, String const &name, void (*start)())
{
    PluginMgr &manager = *m_managers->m_pluginMgr;
    // NOLINTNEXTLINE(clang-analyzer-deadcode.DeadStores): read behind the handlers, where it does not look.
    os::MessagePump *const pumpBefore = os::installedMessagePump();

    String why;
    manager._beginStart(&plugin);
    try {
        start();
        manager._endStart();
        return true;
    } catch (Exception const &exception) {
        why = exception.description;
    } catch (std::exception const &exception) {
        why = exception.what();
    } catch (...) {
        why = "unknown exception";
    }
    manager._endStart();
    os::setMessagePump(pumpBefore);
    logMessage("Plugin '" + name + "' is left out, its dllStartPlugin has thrown: " + why + "\n", 3);
    return false;
}

void Root::unloadPlugins()
{
    m_managers->stopPlugins();
}

std::vector<Plugin *> const &Root::getPlugins() const
{
    return m_managers->m_plugins;
}

} // namespace Qel
