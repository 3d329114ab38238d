#pragma once

#include "System/Patterns/resourceMgr.h"
#include "System/Patterns/tSingleton.h"
#include "System/Sound/soundSystemFactory.h"
#include "System/System/export.h"
#include "System/System/priority.h"
#include "System/System/string.h"

#include <map>

namespace Qel {

class SoundSystemManager;
extern template class QEL_API tSingleton<SoundSystemManager>;

/// Makes and owns sound systems, which back ends bring as plugins. Root makes it.
///
/// @code
/// iSoundSystem *const sound = SoundSystemManager::Instance().load("main", "NULL", PRIORITY_MOST_URGENT);
/// @endcode
///
/// @par Ownership  Owns the sound systems, not the factories.
/// @par Threads    The thread that drives resources.
class QEL_API SoundSystemManager : public cResourceManager, public tSingleton<SoundSystemManager> {
public:
    SoundSystemManager();
    ~SoundSystemManager() override; ///< unloads and destroys all sound systems

    /// Registers a type; a type that is there keeps its first factory. One that a plugin registers when it
    /// starts goes with the plugin, and its sound systems with it.
    void addSoundSystemFactory(SoundSystemFactory *factory);

    /// Forgets a factory, and destroys the sound systems of its type: a plugin calls it when it stops.
    void removeSoundSystemFactory(SoundSystemFactory *factory);

    /// The sound system of a name, made if there is none.
    /// @param type      of a factory; not looked at if the name is there
    /// @param priority  0 loads it now
    /// @return owned by the manager; null for an unknown type
    iSoundSystem *load(String const &name, String const &type, ePriority priority);

    void unload(iSoundSystem *system); ///< unloads and destroys it

protected:
    cResource *create(String const &name, void *user) override; ///< null: they come from load() alone
    void destroy(cResource *resource) override;

private:
    std::map<String, SoundSystemFactory *> m_factories;
};

} // namespace Qel
