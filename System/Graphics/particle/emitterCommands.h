#pragma once

#include "System/Graphics/particle/particleEmitter.h"
#include "System/System/export.h"
#include "System/System/paramCommand.h"
#include "System/System/stringConverter.h"

#include <type_traits>

namespace Qel::EmitterCommands {

/// A parameter of an emitter that goes through its getter and its setter. How text becomes a value is
/// chosen by the getter's type.
/// @tparam Argument  what the setter takes
template <auto getter, class Argument, void (ParticleEmitter::*setter)(Argument)>
class EmitterCommand : public ParamCommand {
public:
    String doGet(void const *target) override
    {
        auto const *const emitter =
            static_cast<ParticleEmitter const *>(static_cast<StringInterface const *>(target));
        return StringConverter::toString((emitter->*getter)());
    }

    void doSet(void *target, String const &value) override
    {
        auto *const emitter = static_cast<ParticleEmitter *>(static_cast<StringInterface *>(target));
        using Value = std::remove_cvref_t<Argument>;
        if constexpr (std::is_same_v<Value, bool>) {
            (emitter->*setter)(StringConverter::parseBool(value));
        } else if constexpr (std::is_same_v<Value, float>) {
            (emitter->*setter)(StringConverter::parseReal(value));
        } else if constexpr (std::is_same_v<Value, D3DXVECTOR3>) {
            (emitter->*setter)(StringConverter::parseVector3d(value));
        } else {
            (emitter->*setter)(static_cast<Value>(StringConverter::parseInt(value)));
        }
    }
};

/// "size"
class QEL_API CmdSize : public EmitterCommand<&ParticleEmitter::getSize, float, &ParticleEmitter::setSize> {};

/// "size_max"
class QEL_API CmdSizeMax
    : public EmitterCommand<&ParticleEmitter::getSizeMax, float, &ParticleEmitter::setSizeMax> {};

/// "emissionangle"
class QEL_API CmdEmissionAngle
    : public EmitterCommand<&ParticleEmitter::getEmissionAngle, float, &ParticleEmitter::setEmissionAngle> {};

/// "emissionanglemin"
class QEL_API CmdEmissionAngleMin : public EmitterCommand<&ParticleEmitter::getEmissionAngleMin, float,
                                                          &ParticleEmitter::setEmissionAngleMin> {};

/// "angle"
class QEL_API CmdAngle
    : public EmitterCommand<&ParticleEmitter::getAngle, float, &ParticleEmitter::setAngle> {};

/// "angle_max"
class QEL_API CmdAngleMax
    : public EmitterCommand<&ParticleEmitter::getAngleMax, float, &ParticleEmitter::setAngleMax> {};

/// "direction"
class QEL_API CmdDirection : public EmitterCommand<&ParticleEmitter::getDirection, D3DXVECTOR3 const &,
                                                   &ParticleEmitter::setDirection> {};

/// "emission_rate"
class QEL_API CmdEmissionRate
    : public EmitterCommand<&ParticleEmitter::getEmissionRate, float, &ParticleEmitter::setEmissionRate> {};

/// "velocity_min"
class QEL_API CmdMinVelocity : public EmitterCommand<&ParticleEmitter::getMinParticleVelocity, float,
                                                     &ParticleEmitter::setMinParticleVelocity> {};

/// "velocity_max"
class QEL_API CmdMaxVelocity : public EmitterCommand<&ParticleEmitter::getMaxParticleVelocity, float,
                                                     &ParticleEmitter::setMaxParticleVelocity> {};

/// "time_to_live_min"
class QEL_API CmdMinTTL
    : public EmitterCommand<&ParticleEmitter::getMinTimeToLive, float, &ParticleEmitter::setMinTimeToLive> {};

/// "time_to_live_max"
class QEL_API CmdMaxTTL
    : public EmitterCommand<&ParticleEmitter::getMaxTimeToLive, float, &ParticleEmitter::setMaxTimeToLive> {};

/// "position"
class QEL_API CmdPosition : public EmitterCommand<&ParticleEmitter::getPosition, D3DXVECTOR3 const &,
                                                  &ParticleEmitter::setPosition> {};

/// "duration_min"
class QEL_API CmdMinDuration
    : public EmitterCommand<&ParticleEmitter::getMinDuration, float, &ParticleEmitter::setMinDuration> {};

/// "duration_max"
class QEL_API CmdMaxDuration
    : public EmitterCommand<&ParticleEmitter::getMaxDuration, float, &ParticleEmitter::setMaxDuration> {};

/// "repeat_delay"
class QEL_API CmdRepeatDelay
    : public EmitterCommand<&ParticleEmitter::getRepeatDelay, float, &ParticleEmitter::setRepeatDelay> {};

/// "repeat_delay_min"
class QEL_API CmdMinRepeatDelay
    : public EmitterCommand<&ParticleEmitter::getMinRepeatDelay, float, &ParticleEmitter::setMinRepeatDelay> {
};

/// "repeat_delay_max"
class QEL_API CmdMaxRepeatDelay
    : public EmitterCommand<&ParticleEmitter::getMaxRepeatDelay, float, &ParticleEmitter::setMaxRepeatDelay> {
};

/// "start_delay_min"
class QEL_API CmdMinStartDelay
    : public EmitterCommand<&ParticleEmitter::getMinStartDelay, float, &ParticleEmitter::setMinStartDelay> {};

/// "start_delay_max"
class QEL_API CmdMaxStartDelay
    : public EmitterCommand<&ParticleEmitter::getMaxStartDelay, float, &ParticleEmitter::setMaxStartDelay> {};

/// "intense"
class QEL_API CmdIntenseFlag
    : public EmitterCommand<&ParticleEmitter::isIntense, bool, &ParticleEmitter::setIntense> {};

/// "material"
class QEL_API CmdMaterial : public ParamCommand {
public:
    String doGet(void const *target) override;
    void doSet(void *target, String const &value) override; ///< also marks the material as modified
};

/// "animSpeed"
class QEL_API CmdAnimSpeed
    : public EmitterCommand<&ParticleEmitter::getAnimSpeed, float, &ParticleEmitter::setAnimSpeed> {};

/// "animFrames"
class QEL_API CmdAnimFrames
    : public EmitterCommand<&ParticleEmitter::getAnimFrames, unsigned char, &ParticleEmitter::setAnimFrames> {
};

/// "brightness"
class QEL_API CmdBrightness
    : public EmitterCommand<&ParticleEmitter::getBrightness, float, &ParticleEmitter::setBrightness> {};

/// "centered"
class QEL_API CmdCentered
    : public EmitterCommand<&ParticleEmitter::isCentered, bool, &ParticleEmitter::setCentered> {};

/// "perspective"
class QEL_API CmdPerspective
    : public EmitterCommand<&ParticleEmitter::getPerspective, bool, &ParticleEmitter::setPerspective> {};

/// "emit_and_disable"
class QEL_API CmdEmitAndDisable
    : public EmitterCommand<&ParticleEmitter::isEmitAndDisable, bool, &ParticleEmitter::setEmitAndDisable> {};

/// "streak_length"
class QEL_API CmdStreakLength : public EmitterCommand<&ParticleEmitter::getStreakLength, float const &,
                                                      &ParticleEmitter::setStreakLength> {};

/// "streak_size"
class QEL_API CmdStreakSize
    : public EmitterCommand<&ParticleEmitter::getStreakSize, float const &, &ParticleEmitter::setStreakSize> {
};

} // namespace Qel::EmitterCommands
