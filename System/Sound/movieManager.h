#pragma once

#include "System/Patterns/tSingleton.h"
#include "System/Sound/movie.h"
#include "System/System/export.h"
#include "System/System/string.h"

#include <map>

namespace Qel {

class MovieManager;
extern template class QEL_API tSingleton<MovieManager>;

/// Where movie players are registered by plugins and made by type. Root makes it.
///
/// @par Ownership  Owns neither factories nor movies.
class QEL_API MovieManager : public tSingleton<MovieManager> {
public:
    MovieManager();
    MovieManager(MovieManager const &) = delete;
    MovieManager &operator=(MovieManager const &) = delete;
    virtual ~MovieManager();

    virtual void destroy(iMovie *movie); ///< deletes it as an iMovie; null is allowed

    /// @return the caller's, to be given back through destroy(); null for an unknown type
    virtual iMovie *create(String const &name, String const &type);

    /// Registers a type; a type that is there keeps its first factory. One that a plugin registers when it
    /// starts goes with the plugin.
    void addMovieFactory(MovieFactory *factory);
    void removeMovieFactory(MovieFactory *factory); ///< its movies are gone by then

private:
    std::map<String, MovieFactory *> m_factories;
};

} // namespace Qel
