#pragma once

#include "System/File/archive.h"
#include "System/Patterns/factoryObj.h"

namespace Qel {

/// Makes the archives of one type; a plugin registers it with ArchiveManager::addArchiveFactory().
///
/// createInstance() is given the archive's name in normal form and makes an archive of that name, which is
/// not loaded yet. The lower-cased name need not be the one on the disk: findDiskName() finds that.
class QEL_API ArchiveFactory : public FactoryObj<iArchive> {
public:
    String getType() const override = 0;
    iArchive *createInstance(String const &name) override = 0;
};

} // namespace Qel
