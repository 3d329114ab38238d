#pragma once

#include "System/Patterns/resourceMgr.h"
#include "System/Patterns/tSingleton.h"
#include "System/System/export.h"

#include <map>

namespace Qel {

class ArchiveFactory;
class iArchive;

class ArchiveManager;
extern template class QEL_API tSingleton<ArchiveManager>;

/// Makes archives through the factories that plugins register, and owns them.
///
/// Archives come through load() alone: asking for one by name as for another resource makes none.
///
/// @par Ownership  Owns the archives, not the factories. An archive that is destroyed goes out of every
///                 container, after the streamer's requests.
/// @par Threads    Belongs to the main thread.
class QEL_API ArchiveManager : public cResourceManager, public tSingleton<ArchiveManager> {
public:
    ArchiveManager();
    ~ArchiveManager() override; ///< destroys all archives

    /// Makes the type known, for as long as its name is free: the first factory of a name stays. Logs.
    /// @param factory  not owned; null does nothing
    void addArchiveFactory(ArchiveFactory *factory);

    /// Forgets a factory, and destroys what it has made. That of a plugin that goes is removed by itself.
    /// @param factory  only its address is used; one that is not known does nothing
    void removeArchiveFactory(ArchiveFactory *factory);

    /// The types that are known, in the order of their names.
    std::map<String, ArchiveFactory *> const &getArchiveFactories() const { return m_factories; }

    /// Gives the archive of a name, made and loaded if it is not there yet.
    /// @param name  in any spelling; two names that differ in case or kind of separator are one
    /// @param type  of a factory; not looked at for an archive that is there
    /// @return the archive, owned by the manager, even if it could not be loaded; null if the type is
    ///         unknown, which is logged, or the factory made nothing
    iArchive *load(String const &name, String const &type);

protected:
    void destroy(cResource *resource) override;

private:
    std::map<String, ArchiveFactory *> m_factories;
};

} // namespace Qel
