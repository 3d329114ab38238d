#pragma once

#include "System/Patterns/tSingleton.h"
#include "System/System/export.h"
#include "System/System/plugin.h"
#include "System/System/string.h"

#include <functional>
#include <map>
#include <memory>
#include <vector>

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

    /// Takes back what the plugin has registered, unloads it and deletes it, also one that was not loaded
    /// here. Null does nothing.
    /// @throws Exception number 9 if it cannot be released; it is deleted all the same
    void unload(Plugin *plugin);

    /// For whoever lets plugins register objects: says how a registration is taken back. Remembered if a
    /// plugin is being started, so that nothing of it is left when its start fails or when it is unloaded;
    /// does nothing otherwise, and without a manager.
    /// @param object    what was registered; only its address is used
    /// @param takeBack  must not follow @p object, which may be gone, and must find managers through their
    ///                  InstancePtr(), since they may be gone too
    static void registered(void const *object, std::function<void()> takeBack);

    /// The object has been taken back by other means.
    static void unregistered(void const *object);

    void _beginStart(Plugin *plugin); ///< what is registered from now on is @p plugin's
    void _endStart();                 ///< ends the last _beginStart()
    void _takeBack(Plugin *plugin);   ///< takes back all that is @p plugin's, the newest first

private:
    struct Registration {
        Plugin *owner;
        void const *object;
        std::function<void()> takeBack;
    };

    std::map<String, std::unique_ptr<Plugin>> m_plugins;
    std::vector<Plugin *> m_starting; // a start function may load further plugins
    std::vector<Registration> m_registrations;
};

} // namespace Qel
