#pragma once

#include "System/System/export.h"
#include "System/System/string.h"

namespace Qel {

/// One dynamic library that brings the engine something: factories, a render system, the desktop.
///
/// A plugin exports two functions of no arguments and no result, "dllStartPlugin" and "dllStopPlugin". The
/// start function registers the plugin's factories and render systems with the managers; the stop function
/// runs after the managers are gone, with no log, and frees what the plugin made.
///
/// @par Ownership  Made and owned by PluginMgr.
/// @par Threads    The thread that starts and stops the engine.
class QEL_API Plugin {
public:
    explicit Plugin(String const &name); ///< stores the file name; loads nothing yet
    virtual ~Plugin();                   ///< unloads if it is loaded

    Plugin(Plugin const &) = delete;
    Plugin &operator=(Plugin const &) = delete;

    /// Loads the file; does nothing if it is loaded.
    /// @throws Exception number 9 if that fails; the reason is in the log
    virtual void load();

    /// Releases the file.
    /// @throws Exception number 9 if it is not loaded or cannot be released
    virtual void unload();

    /// @return the address of an exported symbol, or null if there is none or the plugin is not loaded
    virtual void *getSymbol(String const &name);

    String const &getName() const { return m_name; } ///< as it was given
    bool isLoaded() const { return m_handle != nullptr; }

private:
    String m_name;
    void *m_handle = nullptr;
};

} // namespace Qel
