#include "System/System/pluginMgr.h"

#include "System/Patterns/tSingletonImpl.h"

namespace Qel {

template class tSingleton<PluginMgr>;

PluginMgr::PluginMgr() = default;

PluginMgr::~PluginMgr()
{
    while (!m_plugins.empty()) {
        m_plugins.erase(m_plugins.begin());
    }
}

Plugin *PluginMgr::load(String const &name)
{
    auto const existing = m_plugins.find(name);
    if (existing != m_plugins.end()) {
        return existing->second.get();
    }
    auto plugin = std::make_unique<Plugin>(name);
    plugin->load();
    return m_plugins.emplace(name, std::move(plugin)).first->second.get();
}

void PluginMgr::unload(Plugin *plugin)
{
    if (plugin == nullptr) {
        return;
    }
    std::unique_ptr<Plugin> leaving;
    auto const found = m_plugins.find(plugin->getName());
    if (found != m_plugins.end() && found->second.get() == plugin) {
        leaving = std::move(found->second);
        m_plugins.erase(found);
    } else {
        leaving.reset(plugin);
    }
    leaving->unload();
}

} // namespace Qel
