#include "System/Platform/platformManager.h"

#include "System/System/exception.h"
#include "System/System/pluginMgr.h"
#include "System/Thread/cpuBinding.h"
#include "System/Time/processorInfo.h"

namespace Qel {

template class tSingleton<PlatformManager>;

namespace {

template <class Function>
void bind(Plugin &plugin, char const *symbol, Function *&function)
{
    void *const address = plugin.getSymbol(symbol);
    if (address == nullptr) {
        throw Exception(Exception::InternalFailure,
                        String(PlatformManager::pluginName) + ": cannot find symbol " + symbol,
                        "PlatformManager::PlatformManager", __FILE__, __LINE__);
    }
    function = reinterpret_cast<Function *>(address);
}

template <class Object>
Object *create(void (*function)(Object **))
{
    Object *object = nullptr;
    if (function != nullptr) { // else the manager is still being made
        function(&object);
    }
    return object;
}

template <class Object>
void destroy(void (*function)(Object *), Object *object)
{
    if (object != nullptr) {
        function(object);
    }
}

} // namespace

PlatformManager::PlatformManager()
{
    Plugin &plugin = *PluginMgr::Instance().load(pluginName);
    bind(plugin, "createPlatformConfigDialog", m_createConfigDialog);
    bind(plugin, "createPlatformErrorDialog", m_createErrorDialog);
    bind(plugin, "createPlatformInputReader", m_createInputReader);
    bind(plugin, "createPlatformSplashDialog", m_createSplashDialog);
    bind(plugin, "destroyPlatformConfigDialog", m_destroyConfigDialog);
    bind(plugin, "destroyPlatformErrorDialog", m_destroyErrorDialog);
    bind(plugin, "destroyPlatformInputReader", m_destroyInputReader);
    bind(plugin, "destroyPlatformSplashDialog", m_destroySplashDialog);

    ProcessorInfo const *const processors = ProcessorInfo::InstancePtr();
    cCpuBinding::init(processors != nullptr && processors->getPhysicalCPUs() > 1);
}

PlatformManager::~PlatformManager()
{
    cCpuBinding::deinit();
}

ProcessorInfo &PlatformManager::getProcessorInfo() const
{
    return ProcessorInfo::Instance();
}

ConfigDialog *PlatformManager::createConfigDialog()
{
    return create(m_createConfigDialog);
}

ErrorDialog *PlatformManager::createErrorDialog()
{
    return create(m_createErrorDialog);
}

InputReader *PlatformManager::createInputReader()
{
    return create(m_createInputReader);
}

SplashDialog *PlatformManager::createSplashDialog()
{
    return create(m_createSplashDialog);
}

void PlatformManager::destroyConfigDialog(ConfigDialog *dialog)
{
    destroy(m_destroyConfigDialog, dialog);
}

void PlatformManager::destroyErrorDialog(ErrorDialog *dialog)
{
    destroy(m_destroyErrorDialog, dialog);
}

void PlatformManager::destroyInputReader(InputReader *reader)
{
    destroy(m_destroyInputReader, reader);
}

void PlatformManager::destroySplashDialog(SplashDialog *dialog)
{
    destroy(m_destroySplashDialog, dialog);
}

} // namespace Qel
