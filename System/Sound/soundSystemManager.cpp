#include "System/Sound/soundSystemManager.h"

#include "System/System/logManager.h"
#include "System/System/pluginMgr.h"
#include "System/System/stringTools.h"

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
        PluginMgr::registered(factory, [type, factory] {
            SoundSystemManager *const manager = InstancePtr();
            if (manager == nullptr) {
                return;
            }
            auto const place = manager->m_factories.find(type);
            if (place != manager->m_factories.end() && place->second == factory) {
                manager->m_factories.erase(place);
                manager->destroyIf([&](cResource const &system) { return system.getFactoryName() == type; });
            }
        });
    }
    logMessage("SoundSystemFactory type '" + type + "' registered.\n", 2);
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
