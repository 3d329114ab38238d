#include "System/Sound/soundSystemManager.h"

#include "System/System/logManager.h"
#include "System/System/pluginMgr.h"
#include "System/System/stringTools.h"

#include <algorithm>
#include <memory>

namespace Qel {

template class tSingleton<SoundSystemManager>;

SoundSystemManager::SoundSystemManager() : cResourceManager(0x228FC766, 0)
{
}

SoundSystemManager::~SoundSystemManager()
{
    unloadAndDestroyAll();
}

void SoundSystemManager::addSoundSystemFactory(SoundSystemFactory *factory)
{
    if (factory == nullptr) {
        return;
    }
    String const type = factory->getType();
    if (m_factories.emplace(type, factory).second) {
        PluginMgr::registered(factory, [factory] {
            if (SoundSystemManager *const manager = InstancePtr()) {
                manager->removeSoundSystemFactory(factory);
            }
        });
    }
    logMessage("SoundSystemFactory type '" + type + "' registered.\n", 2);
}

void SoundSystemManager::removeSoundSystemFactory(SoundSystemFactory *factory)
{
    // The factory itself may be gone: it is only compared.
    auto const place = std::find_if(m_factories.begin(), m_factories.end(),
                                    [&](auto const &entry) { return entry.second == factory; });
    if (place != m_factories.end()) {
        String const type = place->first;
        m_factories.erase(place);
        destroyIf([&](cResource const &system) { return system.getFactoryName() == type; });
    }
}

iSoundSystem *SoundSystemManager::load(String const &name, String const &type, ePriority priority)
{
    if (cResource *const resource = getByName(name, false)) {
        return static_cast<iSoundSystem *>(resource);
    }
    auto const place = m_factories.find(type);
    if (place == m_factories.end()) {
        logMessage("SoundSystemFactory type '" + type + "' Unknown!\n", 2);
        return nullptr;
    }
    iSoundSystem *const system = place->second->createInstance(name);
    if (system != nullptr) {
        // As names are looked for.
        StringTools::remap(system->name.data(), String(system->name).c_str(),
                           StringTools::getMapTable(MAP_PATH));
        Register(system, priority);
    }
    return system;
}

void SoundSystemManager::unload(iSoundSystem *system)
{
    unloadAndDestroyResource(system);
}

cResource *SoundSystemManager::create(String const &, void *)
{
    return nullptr;
}

void SoundSystemManager::destroy(cResource *resource)
{
    std::default_delete<cResource>()(resource);
}

} // namespace Qel
