#include "fileSystemArchive.h"

#include "System/File/archiveFactory.h"
#include "System/File/archiveManager.h"

#include <memory>

namespace {

class FileSystemFactory : public Qel::ArchiveFactory {
public:
    Qel::String getType() const override { return "FILESYSTEM"; }
    Qel::iArchive *createInstance(Qel::String const &name) override
    {
        return std::make_unique<FileSystemArchive>(name).release();
    }
};

std::unique_ptr<FileSystemFactory> factory;

} // namespace

extern "C" QEL_API void dllStartPlugin()
{
    factory = std::make_unique<FileSystemFactory>();
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
