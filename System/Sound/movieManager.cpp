#include "System/Sound/movieManager.h"

#include "System/System/logManager.h"
#include "System/System/pluginMgr.h"

#include <memory>
#include <new>

namespace Qel {

template class tSingleton<MovieManager>;

MovieManager::MovieManager() = default;
MovieManager::~MovieManager() = default;

void MovieManager::addMovieFactory(MovieFactory *factory)
{
    if (factory == nullptr) {
        return;
    }
    String const type = factory->getType();
    if (m_factories.emplace(type, factory).second) {
        PluginMgr::registered(factory, [factory] {
            if (MovieManager *const manager = InstancePtr()) {
                manager->removeMovieFactory(factory);
            }
        });
    }
    logMessage("MovieFactory type " + type + " registered.\n", 2);
}

void MovieManager::removeMovieFactory(MovieFactory *factory)
{
    // The factory itself may be gone: it is only compared.
    std::erase_if(m_factories, [&](auto const &entry) { return entry.second == factory; });
}

iMovie *MovieManager::create(String const &name, String const &type)
{
    auto const place = m_factories.find(type);
    if (place == m_factories.end()) {
        logMessage("MovieFactory type " + type + " Unknown!\n", 2);
        return nullptr;
    }
    return place->second->createInstance(name);
}

void MovieManager::destroy(iMovie *movie)
{
    if (movie != nullptr) {
        // The player is larger than an iMovie, and only the form without a size takes it back rightly.
        movie->iMovie::~iMovie();
        ::operator delete(static_cast<void *>(movie));
    }
}

} // namespace Qel
