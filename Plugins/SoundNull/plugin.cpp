#include "nullSound.h"

#include "System/Sound/soundSystemFactory.h"
#include "System/Sound/soundSystemManager.h"

#include <memory>

namespace {

class NullSoundFactory : public Qel::SoundSystemFactory {
public:
    Qel::String getType() const override { return "NULL"; }
    Qel::iSoundSystem *createInstance(Qel::String const &name) override
    {
        return std::make_unique<NullSound>(name, getType()).release();
    }
};

std::unique_ptr<NullSoundFactory> factory;

} // namespace

extern "C" QEL_API void dllStartPlugin()
{
    factory = std::make_unique<NullSoundFactory>();
    if (Qel::SoundSystemManager *const manager = Qel::SoundSystemManager::InstancePtr()) {
        manager->addSoundSystemFactory(factory.get());
    }
}

// Runs after the manager has gone, or while it lives: a system must not stay without its code.
extern "C" QEL_API void dllStopPlugin()
{
    if (Qel::SoundSystemManager *const manager = Qel::SoundSystemManager::InstancePtr()) {
        manager->removeSoundSystemFactory(factory.get());
    }
    factory.reset();
}
