#include "System/Graphics/particle/emitterCommands.h"

namespace Qel {

EmitterCommands::CmdSize ParticleEmitter::msSizeCmd;
EmitterCommands::CmdSizeMax ParticleEmitter::msSizeMaxCmd;
EmitterCommands::CmdEmissionAngle ParticleEmitter::msEmissionAngleCmd;
EmitterCommands::CmdEmissionAngleMin ParticleEmitter::msEmissionAngleMinCmd;
EmitterCommands::CmdAngle ParticleEmitter::msAngleCmd;
EmitterCommands::CmdAngleMax ParticleEmitter::msAngleMaxCmd;
EmitterCommands::CmdDirection ParticleEmitter::msDirectionCmd;
EmitterCommands::CmdEmissionRate ParticleEmitter::msEmissionRateCmd;
EmitterCommands::CmdMinVelocity ParticleEmitter::msMinVelocityCmd;
EmitterCommands::CmdMaxVelocity ParticleEmitter::msMaxVelocityCmd;
EmitterCommands::CmdMinTTL ParticleEmitter::msMinTTLCmd;
EmitterCommands::CmdMaxTTL ParticleEmitter::msMaxTTLCmd;
EmitterCommands::CmdPosition ParticleEmitter::msPositionCmd;
EmitterCommands::CmdMinDuration ParticleEmitter::msMinDurationCmd;
EmitterCommands::CmdMaxDuration ParticleEmitter::msMaxDurationCmd;
EmitterCommands::CmdRepeatDelay ParticleEmitter::msRepeatDelayCmd;
EmitterCommands::CmdMinRepeatDelay ParticleEmitter::msMinRepeatDelayCmd;
EmitterCommands::CmdMaxRepeatDelay ParticleEmitter::msMaxRepeatDelayCmd;
EmitterCommands::CmdMinStartDelay ParticleEmitter::msMinStartDelayCmd;
EmitterCommands::CmdMaxStartDelay ParticleEmitter::msMaxStartDelayCmd;
EmitterCommands::CmdIntenseFlag ParticleEmitter::msIntenseFlagCmd;
EmitterCommands::CmdMaterial ParticleEmitter::msMaterialCmd;
EmitterCommands::CmdAnimSpeed ParticleEmitter::msAnimSpeedCmd;
EmitterCommands::CmdAnimFrames ParticleEmitter::msAnimFramesCmd;
EmitterCommands::CmdBrightness ParticleEmitter::msBrightnessCmd;
EmitterCommands::CmdCentered ParticleEmitter::msCenteredCmd;
EmitterCommands::CmdPerspective ParticleEmitter::msPerspectiveCmd;
EmitterCommands::CmdEmitAndDisable ParticleEmitter::msEmitAndDisableCmd;
EmitterCommands::CmdStreakLength ParticleEmitter::msStreakLengthCmd;
EmitterCommands::CmdStreakSize ParticleEmitter::msStreakSizeCmd;

// In the order in which a saved script lists them.
void ParticleEmitter::addBaseParameters()
{
    ParamDictionary *const dictionary = getParamDictionary();
    if (dictionary == nullptr) {
        return;
    }
    struct {
        char const *name;
        char const *description;
        ParameterType type;
        ParamCommand *command;
    } const rows[] = {
        {"size", "The size in which the emitted particles are initially created ", PARAM_FLOAT, &msSizeCmd},
        {"size_max", "The max size in which the emitted particles are initially created ", PARAM_FLOAT,
         &msSizeMaxCmd},
        {"emissionangle",
         "The max angle up to which particles may vary in their initial direction from the emitters "
         "direction, in degrees.",
         PARAM_FLOAT, &msEmissionAngleCmd},
        {"emissionanglemin",
         "The min angle up to which particles may vary in their initial direction from the emitters "
         "direction, in degrees.",
         PARAM_FLOAT, &msEmissionAngleMinCmd},
        {"angle", "Min Rotation of Particle at Emission , in degrees.", PARAM_FLOAT, &msAngleCmd},
        {"angle_max", "Max Rotation of Particle at Emission, in degrees.", PARAM_FLOAT, &msAngleMaxCmd},
        {"direction", "The base direction of the emitter.", PARAM_VEC3, &msDirectionCmd},
        {"emission_rate", "The number of particles emitted per second.", PARAM_FLOAT, &msEmissionRateCmd},
        {"velocity_min", "The minimum initial velocity to be assigned to each particle.", PARAM_FLOAT,
         &msMinVelocityCmd},
        {"velocity_max", "The maximum initial velocity to be assigned to each particle.", PARAM_FLOAT,
         &msMaxVelocityCmd},
        {"time_to_live_min", "The minimum lifetime of each particle in seconds.", PARAM_FLOAT, &msMinTTLCmd},
        {"time_to_live_max", "The maximum lifetime of each particle in seconds.", PARAM_FLOAT, &msMaxTTLCmd},
        {"position", "The position of the emitter relative to the particle system center.", PARAM_VEC3,
         &msPositionCmd},
        {"duration_min", "The minimum length of time in seconds which an emitter stays enabled for.",
         PARAM_FLOAT, &msMinDurationCmd},
        {"duration_max", "The maximum length of time in seconds which an emitter stays enabled for.",
         PARAM_FLOAT, &msMaxDurationCmd},
        {"repeat_delay", "If set, after disabling an emitter will repeat (reenable) after this many seconds.",
         PARAM_FLOAT, &msRepeatDelayCmd},
        {"repeat_delay_min",
         "If set, after disabling an emitter will repeat (reenable) after this minimum number of seconds.",
         PARAM_FLOAT, &msMinRepeatDelayCmd},
        {"repeat_delay_max",
         "If set, after disabling an emitter will repeat (reenable) after this maximum number of seconds.",
         PARAM_FLOAT, &msMaxRepeatDelayCmd},
        {"start_delay_min", "minimum time, the particle system will be delayed on startup.", PARAM_FLOAT,
         &msMinStartDelayCmd},
        {"start_delay_max", "maximum time, the particle system will be delayed on startup.", PARAM_FLOAT,
         &msMaxStartDelayCmd},
        {"intense", "If set, the emitted particles will glow", PARAM_BOOL, &msIntenseFlagCmd},
        {"material", "The name of the material to be used to render all particles of this emitter",
         PARAM_MATERIAL, &msMaterialCmd},
        {"animSpeed", "The number of frames/second for animated particles", PARAM_FLOAT, &msAnimSpeedCmd},
        {"animFrames", "The max number of frames for animated particles", PARAM_INT, &msAnimFramesCmd},
        {"brightness", "The initial particle brightness", PARAM_FLOAT, &msBrightnessCmd},
        {"centered", "Position of rotation center of particles", PARAM_BOOL, &msCenteredCmd},
        {"perspective", "Particle is rendered with perspective, NO billboard!", PARAM_BOOL,
         &msPerspectiveCmd},
        {"emit_and_disable",
         "Once the emitter gets enabled, it fills up the quota of the system and disables itself", PARAM_BOOL,
         &msEmitAndDisableCmd},
        {"streak_length", "The length of the streaks relative to their speed", PARAM_FLOAT,
         &msStreakLengthCmd},
        {"streak_size", "The size of the streaks", PARAM_FLOAT, &msStreakSizeCmd},
    };
    for (auto const &row : rows) {
        dictionary->addParameter({row.name, row.description, row.type}, row.command);
    }
}

namespace EmitterCommands {

String CmdMaterial::doGet(void const *target)
{
    return static_cast<ParticleEmitter const *>(static_cast<StringInterface const *>(target))->materialName;
}

void CmdMaterial::doSet(void *target, String const &value)
{
    static_cast<ParticleEmitter *>(static_cast<StringInterface *>(target))->setMaterialName(value);
}

} // namespace EmitterCommands

} // namespace Qel
