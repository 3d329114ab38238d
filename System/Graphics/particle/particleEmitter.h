#pragma once

#include "Support/D3DX/d3dx9math.h"
#include "System/System/export.h"
#include "System/System/string.h"
#include "System/System/stringInterface.h"

#include <cstdint>

class PoolBlk;

namespace Qel {

class cFile;
class Particle;
class ParticleEmitter;
class ParticleEmitterFactory;

namespace EmitterCommands {
class CmdSize;
class CmdSizeMax;
class CmdEmissionAngle;
class CmdEmissionAngleMin;
class CmdAngle;
class CmdAngleMax;
class CmdDirection;
class CmdEmissionRate;
class CmdMinVelocity;
class CmdMaxVelocity;
class CmdMinTTL;
class CmdMaxTTL;
class CmdPosition;
class CmdMinDuration;
class CmdMaxDuration;
class CmdRepeatDelay;
class CmdMinRepeatDelay;
class CmdMaxRepeatDelay;
class CmdMinStartDelay;
class CmdMaxStartDelay;
class CmdIntenseFlag;
class CmdMaterial;
class CmdAnimSpeed;
class CmdAnimFrames;
class CmdBrightness;
class CmdCentered;
class CmdPerspective;
class CmdEmitAndDisable;
class CmdStreakLength;
class CmdStreakSize;
} // namespace EmitterCommands

/// Moves an emitter just before it makes a particle.
class QEL_API ParticleEmitterCallback {
public:
    /// Called for each new particle, before it is initialised, on the thread that updates the system.
    /// @param position  the emitter's own, to be changed at will
    virtual void updatePosition(D3DXVECTOR3 &position) = 0;

protected:
    ~ParticleEmitterCallback() = default; // not virtual: an emitter does not own it
};

/// Decides when particles are born in a ParticleSystem, and with which values.
///
/// This is what all types share: the parameters, the phases, and generators of random initial values. A
/// plugin derives its types from it and registers a ParticleEmitterFactory for each:
///
/// @code
/// Dot::Dot(ParticleEmitterFactory *factory) : ParticleEmitter(factory)
/// {
///     if (createParamDictionary("EmitterDot")) {
///         addBaseParameters();
///     }
/// }
///
/// unsigned short Dot::genEmissionCount(float timeElapsed) { return genConstantEmissionCount(timeElapsed); }
///
/// void Dot::_initParticle(Particle *particle, D3DXVECTOR3 const &offset)
/// {
///     ParticleEmitter::_initParticle(particle, offset);
///     particle->position = getPosition() + offset;
///     genEmissionDirection(particle->direction);
///     genEmissionVelocity(particle->direction);
///     particle->timeToLive = particle->totalTimeToLive = genEmissionTTL();
///     particle->setRotation(genRotationAngle());
/// }
/// @endcode
///
/// **Phases.** An emitter is enabled at first. With a duration it is disabled after that, and with a repeat
/// delay enabled again; by how much a phase ran over is taken off the next. A maximum of 0 means no end.
///
/// Angles are degrees in parameters, getters and setters, and radians in the fields. Times are seconds. Of a
/// pair of minimum and maximum either may be the larger one; where they are equal no random number is drawn.
///
/// @par Ownership  Belongs to one ParticleSystem, and is given back to its factory.
/// @par Threads    Called on the thread that updates its system. All draws come from cRand::mt.
class QEL_API ParticleEmitter : public StringInterface {
public:
    explicit ParticleEmitter(ParticleEmitterFactory *maker) : factory(maker) {}
    ParticleEmitter(ParticleEmitter const &) = default; ///< every field, the factory and the callback too
    ParticleEmitter &operator=(ParticleEmitter const &) = default;
    ~ParticleEmitter() override;

protected:
    /// The base direction, or one within the emission angles around it.
    virtual void genEmissionDirection(D3DXVECTOR3 &out);
    virtual void genEmissionVelocity(D3DXVECTOR3 &v); ///< multiplies @p v by a speed
    virtual float genEmissionTTL();                   ///< a lifetime in seconds

    /// Steps the phases and gives the particles due.
    /// @return 0 to 65535; the fraction is carried over
    virtual unsigned short genConstantEmissionCount(float timeElapsed);
    virtual float genRotationAngle(); ///< radians

public:
    /// For the type's own use; the library does not call it. The base does nothing.
    virtual void _initEmitter() = 0;

    /// Reads what _serialize() wrote. A stream that ends early leaves the values that did not arrive. A type
    /// calls the base and then reads its own.
    virtual void _deserialize(cFile &file) = 0;
    virtual void _serialize(cFile &file) = 0; ///< a type calls the base and then writes its own

    virtual char const *getType() const; ///< the factory's
    virtual ParticleEmitterFactory *getFactory() const { return factory; }

    /// Initialises a new particle. The base sets flags, colour, brightness, size and frame; a type calls it
    /// and then sets position, direction, lifetime and rotation.
    /// @param offset  how far along the system's own way the particle is born
    virtual void _initParticle(Particle *particle, D3DXVECTOR3 const &offset);
    virtual void setParticleEmitterCallback(ParticleEmitterCallback *newCallback) { callback = newCallback; }

    /// Takes data of the host's, as ParticleSystem::setEmitterData() passes it on. The base does nothing.
    virtual void setEmitterData(PoolBlk const *data);

    virtual void setEnabled(bool on); ///< begins a phase, and draws how long it lasts
    virtual bool getEnabled() const { return enabled; }

    /// How many particles are wanted in this update; mostly genConstantEmissionCount().
    virtual unsigned short genEmissionCount(float timeElapsed) = 0;

    virtual void setPosition(D3DXVECTOR3 const &newPosition) { position = newPosition; }
    virtual D3DXVECTOR3 const &getPosition() const { return position; } ///< relative to the system's centre
    virtual void setDirection(D3DXVECTOR3 const &newDirection);         ///< normalised
    virtual D3DXVECTOR3 const &getDirection() const { return direction; }

    virtual void setEmissionAngle(float degrees); ///< the largest deviation from the direction
    virtual float getEmissionAngle() const;
    virtual void setEmissionAngleMin(float degrees); ///< the smallest one
    virtual float getEmissionAngleMin() const;
    virtual void setAngle(float degrees); ///< initial rotation; raises a maximum that is below it
    virtual float getAngle() const;
    virtual void setAngleMax(float degrees);
    virtual float getAngleMax() const;

    virtual void setSize(float size); ///< raises a maximum that is below it
    virtual float getSize() const { return sizeMin; }
    virtual void setSizeMax(float size) { sizeMax = size; }
    virtual float getSizeMax() const { return sizeMax; }

    virtual void setParticleVelocity(float min, float max);
    virtual void setParticleVelocity(float velocity) { velocityMin = velocityMax = velocity; }
    virtual void setEmissionRate(float particlesPerSecond) { emissionRate = particlesPerSecond; }
    virtual float getEmissionRate() const { return emissionRate; }
    virtual void setTimeToLive(float min, float max);
    virtual void setTimeToLive(float seconds) { timeToLiveMin = timeToLiveMax = seconds; }
    virtual void setMinParticleVelocity(float velocity) { velocityMin = velocity; }
    virtual void setMaxParticleVelocity(float velocity) { velocityMax = velocity; }
    virtual float getParticleVelocity() const { return velocityMin; } ///< the minimum
    virtual float getMinParticleVelocity() const { return velocityMin; }
    virtual float getMaxParticleVelocity() const { return velocityMax; }
    virtual float getTimeToLive() const { return timeToLiveMin; } ///< the minimum
    virtual float getMinTimeToLive() const { return timeToLiveMin; }
    virtual float getMaxTimeToLive() const { return timeToLiveMax; }
    virtual void setMinTimeToLive(float seconds) { timeToLiveMin = seconds; }
    virtual void setMaxTimeToLive(float seconds) { timeToLiveMax = seconds; }

    virtual float getDuration() const { return durationMin; } ///< the minimum
    virtual void setDuration(float min, float max);
    virtual void setDuration(float seconds) { durationMin = durationMax = seconds; }
    virtual void setMinDuration(float seconds); ///< begins the present phase anew
    virtual void setMaxDuration(float seconds); ///< begins the present phase anew
    virtual float getMinDuration() const { return durationMin; }
    virtual float getMaxDuration() const { return durationMax; }

    virtual void setRepeatDelay(float min, float max);
    virtual void setRepeatDelay(float seconds) { repeatDelayMin = repeatDelayMax = seconds; }
    virtual float getRepeatDelay() const { return repeatDelayMin; } ///< the minimum
    virtual void setMinRepeatDelay(float seconds) { repeatDelayMin = seconds; }
    virtual void setMaxRepeatDelay(float seconds) { repeatDelayMax = seconds; }
    virtual float getMinRepeatDelay() const { return repeatDelayMin; }
    virtual float getMaxRepeatDelay() const { return repeatDelayMax; }

    virtual void setMinStartDelay(float seconds) { startDelayMin = seconds; }
    virtual void setMaxStartDelay(float seconds) { startDelayMax = seconds; }
    virtual float getMinStartDelay() const { return startDelayMin; }
    virtual float getMaxStartDelay() const { return startDelayMax; }

    virtual void setBrightness(float newBrightness) { brightness = newBrightness; } ///< 0 to 1
    virtual float getBrightness() const { return brightness; }
    virtual void setCentered(bool on) { centered = on; }
    virtual bool isCentered() const { return centered; }
    virtual void setEmitAndDisable(bool on) { emitAndDisable = on; } ///< one burst, then disabled
    virtual bool isEmitAndDisable() const { return emitAndDisable; }
    virtual bool isIntense() const;
    virtual void setIntense(bool on);
    virtual void setPerspective(bool on) { perspective = on; }
    virtual bool getPerspective() const { return perspective; }

    virtual float getAnimSpeed() const { return animSpeed; } ///< frames a second
    virtual void setAnimSpeed(float framesPerSecond) { animSpeed = framesPerSecond; }
    virtual unsigned char getAnimFrames() const { return animFrames; }
    virtual void setAnimFrames(unsigned char frames) { animFrames = frames; }

    virtual float getStreakLength() const { return streakLength; } ///< relative to the particle's speed
    virtual void setStreakLength(float const &length) { streakLength = length; }
    virtual float getStreakSize() const { return streakSize; }
    virtual void setStreakSize(float const &size) { streakSize = size; }

    /// Makes another emitter of the same type like this one. A type calls the base and copies its own.
    virtual void copyParametersToBinary(ParticleEmitter *other) const;

    void setMaterialName(String const &name);
    String const &getMaterialName() const { return materialName; }
    bool isMaterialModified(); ///< whether the material has been set since this was last asked
    bool hasStreaks() const { return streakLength > 0 && isIntense(); }
    void setStartDelay(float seconds) { startDelay = seconds; }
    float getStartDelay() const { return startDelay; } ///< seconds until it starts

    /// @name The commands of the parameters
    /// @{
    static EmitterCommands::CmdSize msSizeCmd;
    static EmitterCommands::CmdSizeMax msSizeMaxCmd;
    static EmitterCommands::CmdEmissionAngle msEmissionAngleCmd;
    static EmitterCommands::CmdEmissionAngleMin msEmissionAngleMinCmd;
    static EmitterCommands::CmdAngle msAngleCmd;
    static EmitterCommands::CmdAngleMax msAngleMaxCmd;
    static EmitterCommands::CmdDirection msDirectionCmd;
    static EmitterCommands::CmdEmissionRate msEmissionRateCmd;
    static EmitterCommands::CmdMinVelocity msMinVelocityCmd;
    static EmitterCommands::CmdMaxVelocity msMaxVelocityCmd;
    static EmitterCommands::CmdMinTTL msMinTTLCmd;
    static EmitterCommands::CmdMaxTTL msMaxTTLCmd;
    static EmitterCommands::CmdPosition msPositionCmd;
    static EmitterCommands::CmdMinDuration msMinDurationCmd;
    static EmitterCommands::CmdMaxDuration msMaxDurationCmd;
    static EmitterCommands::CmdRepeatDelay msRepeatDelayCmd;
    static EmitterCommands::CmdMinRepeatDelay msMinRepeatDelayCmd;
    static EmitterCommands::CmdMaxRepeatDelay msMaxRepeatDelayCmd;
    static EmitterCommands::CmdMinStartDelay msMinStartDelayCmd;
    static EmitterCommands::CmdMaxStartDelay msMaxStartDelayCmd;
    static EmitterCommands::CmdIntenseFlag msIntenseFlagCmd;
    static EmitterCommands::CmdMaterial msMaterialCmd;
    static EmitterCommands::CmdAnimSpeed msAnimSpeedCmd;
    static EmitterCommands::CmdAnimFrames msAnimFramesCmd;
    static EmitterCommands::CmdBrightness msBrightnessCmd;
    static EmitterCommands::CmdCentered msCenteredCmd;
    static EmitterCommands::CmdPerspective msPerspectiveCmd;
    static EmitterCommands::CmdEmitAndDisable msEmitAndDisableCmd;
    static EmitterCommands::CmdStreakLength msStreakLengthCmd;
    static EmitterCommands::CmdStreakSize msStreakSizeCmd;
    /// @}

protected:
    /// Enters the 30 parameters of every emitter in this object's dictionary; nothing if it has none.
    void addBaseParameters();

    ParticleEmitterFactory *factory; ///< not owned
    String materialName;             ///< of all particles of this emitter
    D3DXVECTOR3 position{0, 0, 0};
    D3DXVECTOR3 direction{1, 0, 0};
    D3DXVECTOR3 up{0, 0, 1}; ///< a normal to the direction
    float emissionRemainder = 0.0f;
    float emissionRate = 10.0f;
    float emissionAngle = 0.0f; ///< radians, as the three below
    float emissionAngleMin = 0.0f;
    float angle = 0.0f;
    float angleMax = 0.0f;
    float velocityMin = 1.0f;
    float velocityMax = 1.0f;
    float timeToLiveMin = 5.0f;
    float timeToLiveMax = 5.0f;
    float reserved = 0.0f;
    float durationMin = 0.0f;
    float durationMax = 0.0f;
    float durationRemain = 0.0f; ///< seconds left of the enabled phase
    float repeatDelayMin = 0.0f;
    float repeatDelayMax = 0.0f;
    float repeatDelayRemain = 0.0f; ///< seconds left of the disabled phase
    bool enabled = true;
    bool materialModified = false;
    float sizeMin = 1.0f;
    float sizeMax = 1.0f;
    float brightness = 0.0f;
    float animSpeed = 1.0f;
    bool centered = true;
    bool perspective = false;
    bool emitAndDisable = false;
    ParticleEmitterCallback *callback = nullptr; ///< not owned
    float startDelayMin = 0.0f;
    float startDelayMax = 0.0f;
    float startDelay = 0.0f;
    std::uint8_t flags = 0; ///< Particle::INTENSE
    std::uint8_t animFrames = 1;
    float streakLength = 0.0f;
    float streakSize = 1.0f;

private:
    friend class EmitterCommands::CmdMaterial;

    template <class Stream>
    void transfer(Stream &stream);
    float phaseLength(float min, float max, float endedRemain);
};

/// Makes and destroys the emitters of one type; a plugin registers it with
/// ParticleSystemMgr::addEmitterFactory().
///
/// @par Ownership  The plugin's. It must outlive every emitter that came from it.
class QEL_API ParticleEmitterFactory {
public:
    ParticleEmitterFactory() = default;
    ParticleEmitterFactory(ParticleEmitterFactory const &) = default;
    ParticleEmitterFactory &operator=(ParticleEmitterFactory const &) = default;
    virtual ~ParticleEmitterFactory();

    virtual char const *getType() const = 0; ///< the type's name in scripts
    virtual ParticleEmitter *createEmitter() = 0;

    /// Makes an emitter and lets it read its parameters from the stream.
    virtual ParticleEmitter *createEmitter(cFile &file) = 0;

    virtual void destroyEmitter(ParticleEmitter *emitter); ///< the base deletes it; null is allowed
};

} // namespace Qel
