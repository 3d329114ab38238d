#include "zipArchive.h"

#include "System/File/archiveFactory.h"
#include "System/File/archiveManager.h"

#include <memory>

namespace {

class ZipFactory : public Qel::ArchiveFactory {
public:
    Qel::String getType() const override { return "ZIP"; }
    Qel::iArchive *createInstance(Qel::String const &name) override
    {
        return std::make_unique<ZipArchive>(name).release();
    }
};

std::unique_ptr<ZipFactory> factory;

} // namespace

extern "C" QEL_API void dllStartPlugin()
{
    factory = std::make_unique<ZipFactory>();
    if (Qel::ArchiveManager *const manager = Qel::ArchiveManager::InstancePtr()) {
        manager->addArchiveFactory(factory.get());
    }
}

// Runs after the manager has gone, or while it lives: what the factory has made must not stay without its
// code.
extern "C" QEL_API void dllStopPlugin()
{
    if (Qel::ArchiveManager *const manager = Qel::ArchiveManager::InstancePtr()) {
        manager->removeArchiveFactory(factory.get());
    }
    factory.reset();
}
