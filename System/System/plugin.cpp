#include "System/System/plugin.h"

#include "System/System/exception.h"
#include "System/System/logManager.h"

#include "Support/OS/module.h"

#include <string>

namespace Qel {

Plugin::Plugin(String const &name) : m_name(name)
{
}

Plugin::~Plugin()
{
    if (m_handle != nullptr) {
        os::closeModule(m_handle);
    }
}

void Plugin::load()
{
    if (m_handle != nullptr) {
        return;
    }
    std::string why;
    m_handle = os::openModule(m_name.c_str(), why);
    if (m_handle == nullptr) {
        logMessage("Plugin::load() " + m_name + ": " + String(why.c_str()) + "\n", 2);
        throw Exception(Exception::InternalFailure, "Error: DYNLIB_LOAD failed: " + m_name, "Plugin::load",
                        __FILE__, __LINE__);
    }
}

void Plugin::unload()
{
    if (!os::closeModule(m_handle)) {
        throw Exception(Exception::InternalFailure, "Error: DYNLIB_UNLOAD failed: " + m_name,
                        "Plugin::unload", __FILE__, __LINE__);
    }
    m_handle = nullptr;
}

void *Plugin::getSymbol(String const &name)
{
    return os::findSymbol(m_handle, name.c_str());
}

} // namespace Qel
