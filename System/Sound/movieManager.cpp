#include "System/Sound/movieManager.h"

#include "System/System/logManager.h"
#include "System/System/pluginMgr.h"

#include <memory>

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
        PluginMgr::registered(factory, [type, factory] {
            if (MovieManager *const manager = InstancePtr()) {
                auto const place = manager->m_factories.find(type);
                if (place != manager->m_factories.end() && place->second == factory) {
                    manager->m_factories.erase(place);
                }
            }
        });
    }
    logMessage("MovieFactory type " + type + " registered.\n", 2);
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
