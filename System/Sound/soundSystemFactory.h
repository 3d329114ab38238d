#pragma once

#include "System/Patterns/factoryObj.h"
#include "System/Sound/soundSystem.h"
#include "System/System/export.h"

namespace Qel {

/// Makes the sound systems of one type; a back end's plugin registers it with
/// SoundSystemManager::addSoundSystemFactory(). createInstance() is given the system's name.
class QEL_API SoundSystemFactory : public FactoryObj<iSoundSystem> {
public:
    String getType() const override = 0;
    iSoundSystem *createInstance(String const &name) override = 0;
};

} // namespace Qel
