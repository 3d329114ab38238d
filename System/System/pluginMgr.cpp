#include "System/System/pluginMgr.h"

#include <algorithm>
#include <utility>

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
    _takeBack(plugin);
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

void PluginMgr::registered(void const *object, std::function<void()> takeBack)
{
    PluginMgr *const manager = InstancePtr();
    if (manager != nullptr && !manager->m_starting.empty()) {
        manager->m_registrations.push_back({manager->m_starting.back(), object, std::move(takeBack)});
    }
}

void PluginMgr::unregistered(void const *object)
{
    if (PluginMgr *const manager = InstancePtr()) {
        std::erase_if(manager->m_registrations,
                      [object](Registration const &one) { return one.object == object; });
    }
}

void PluginMgr::_beginStart(Plugin *plugin)
{
    m_starting.push_back(plugin);
}

void PluginMgr::_endStart()
{
    m_starting.pop_back();
}

void PluginMgr::_takeBack(Plugin *plugin)
{
    std::vector<Registration> all = std::move(m_registrations);
    m_registrations.clear();
    auto const others = std::stable_partition(all.begin(), all.end(),
                                              [plugin](auto const &one) { return one.owner != plugin; });
    for (auto at = all.end(); at != others;) {
        (--at)->takeBack();
    }
    all.erase(others, all.end());
    m_registrations = std::move(all);
}

} // namespace Qel
