#include "alSound.h"
#include "settings.h"

#include "System/Sound/soundSystemFactory.h"
#include "System/Sound/soundSystemManager.h"

#include <memory>

namespace settings {

Qel::Configurable<Qel::String> device("openal.device", "");
Qel::Configurable<Qel::String> file("openal.file", "");

} // namespace settings

namespace {

class AlSoundFactory final : public Qel::SoundSystemFactory {
public:
    Qel::String getType() const override { return "OPENAL"; }
    Qel::iSoundSystem *createInstance(Qel::String const &name) override
    {
        return std::make_unique<AlSound>(name, getType()).release();
    }
};

std::unique_ptr<AlSoundFactory> factory;

} // namespace

extern "C" QEL_API void dllStartPlugin()
{
    factory = std::make_unique<AlSoundFactory>();
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
