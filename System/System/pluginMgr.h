#pragma once

#include "System/Patterns/tSingleton.h"
#include "System/System/export.h"
#include "System/System/plugin.h"
#include "System/System/string.h"

#include <map>
#include <memory>

namespace Qel {

class PluginMgr;
extern template class QEL_API tSingleton<PluginMgr>;

/// Loads and unloads plugins, each file name once.
///
/// @par Ownership  Owns the plugins it loads; unloads what is left when it dies.
/// @par Threads    The thread that starts and stops the engine.
class QEL_API PluginMgr : public tSingleton<PluginMgr> {
public:
    PluginMgr();
    virtual ~PluginMgr(); ///< unloads all plugins in the order of their names

    PluginMgr(PluginMgr const &) = delete;
    PluginMgr &operator=(PluginMgr const &) = delete;

    /// Gives the plugin of that file name, loading it if it is new. Names that differ in case or path are
    /// different plugins, even if they reach the same file.
    /// @return owned by the manager; never null
    /// @throws Exception number 9 if the file cannot be loaded; nothing is then kept of it
    Plugin *load(String const &name);

    /// Unloads a plugin and deletes it, also one that was not loaded here. Null does nothing.
    /// @throws Exception number 9 if it cannot be released; it is deleted all the same
    void unload(Plugin *plugin);

private:
    std::map<String, std::unique_ptr<Plugin>> m_plugins;
};

} // namespace Qel
