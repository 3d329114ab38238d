#include "System/File/archiveManager.h"

#include "System/File/archive.h"
#include "System/File/archiveFactory.h"
#include "System/File/archiveStreaming.h"
#include "System/System/logManager.h"
#include "System/System/pluginMgr.h"

#include <memory>

namespace Qel {

template class tSingleton<ArchiveManager>;

ArchiveManager::ArchiveManager() : cResourceManager(0x228FC766, 0)
{
}

ArchiveManager::~ArchiveManager()
{
    unloadAndDestroyAll();
    m_factories.clear();
}

void ArchiveManager::addArchiveFactory(ArchiveFactory *factory)
{
    if (factory == nullptr) {
        return;
    }
    String const type = factory->getType();
    if (m_factories.emplace(type, factory).second) {
        PluginMgr::registered(factory, [factory] {
            if (ArchiveManager *const manager = InstancePtr()) {
                manager->removeArchiveFactory(factory);
            }
        });
    }
    if (LogManager *const log = LogManager::InstancePtr()) {
        log->logMessage("ArchiveFactory type '" + type + "' registered.\n", 2);
    }
}

void ArchiveManager::removeArchiveFactory(ArchiveFactory *factory)
{
    for (auto place = m_factories.begin(); place != m_factories.end(); ++place) {
        if (place->second == factory) {
            String const type = place->first;
            m_factories.erase(place);
            PluginMgr::unregistered(factory);
            destroyIf([&](cResource const &archive) { return archive.getFactoryName() == type; });
            return;
        }
    }
}

iArchive *ArchiveManager::load(String const &name, String const &type)
{
    String normal = name;
    StringTools::remap(normal.data(), name.c_str(), StringTools::getMapTable(MAP_PATH));
    if (cResource *const known = getByName(normal, false)) {
        return static_cast<iArchive *>(known);
    }
    auto const place = m_factories.find(type);
    if (place == m_factories.end()) {
        if (LogManager *const log = LogManager::InstancePtr()) {
            log->logMessage("ArchiveFactory type '" + type + "' Unknown!\n", 2);
        }
        return nullptr;
    }
    iArchive *const archive = place->second->createInstance(normal);
    if (archive != nullptr) {
        static_cast<cResource *>(archive)->factoryName = type;
        Register(archive, PRIORITY_MOST_URGENT);
    }
    return archive;
}

void ArchiveManager::destroy(cResource *resource)
{
    if (resource == nullptr) {
        return;
    }
    if (streamer != nullptr) {
        streamer->flushRequests(); // its threads may be reading the archive
    }
    std::unique_ptr<cResource> const owner(resource);
}

} // namespace Qel
