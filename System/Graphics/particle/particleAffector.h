#pragma once

#include "Support/D3DX/d3dx9math.h"
#include "System/System/export.h"
#include "System/System/paramCommand.h"
#include "System/System/stringInterface.h"

#include <cstdint>

namespace Qel {

class cFile;
class Particle;
class ParticleAffectorFactory;
class ParticleSystem;

namespace AffectorCommands {
class CmdOnEmitter;
}

/// Changes the particles of a system while they live: wind, gravity, a fade.
///
/// A plugin derives its types from this class and registers a ParticleAffectorFactory for each. The
/// constructor of a type makes the dictionary of its parameters:
///
/// @code
/// Wind::Wind(ParticleAffectorFactory *factory) : ParticleAffector(factory)
/// {
///     if (createParamDictionary("AffectorWind")) {
///         addBaseParameters();
///         getParamDictionary()->addParameter({"force", "Acceleration.", PARAM_VEC3}, &msForceCmd);
///     }
/// }
///
/// void Wind::_affect(ParticleSystem *system, float timeElapsed)
/// {
///     Particle *const particles = system->getParticles();
///     for (unsigned int i = 0; i < system->getActiveCount(); ++i) {
///         if (particles[i].canAffect(getOnEmitter())) {
///             particles[i].direction += m_force * timeElapsed;
///         }
///     }
/// }
/// @endcode
///
/// @par Ownership  Belongs to one ParticleSystem, and is given back to its factory.
/// @par Threads    Called on the thread that updates its system.
class QEL_API ParticleAffector : public StringInterface {
public:
    explicit ParticleAffector(ParticleAffectorFactory *maker) : factory(maker) {}
    ParticleAffector(ParticleAffector const &) = default;
    ParticleAffector &operator=(ParticleAffector const &) = default;
    ~ParticleAffector() override;

    /// For the type's own use; the library does not call it. The base does nothing.
    virtual void _initAffector() = 0;

    /// Reads what _serialize() wrote. The base reads onEmitter; a type calls it and then reads its own.
    virtual void _deserialize(cFile &file) = 0;
    virtual void _serialize(cFile &file) = 0; ///< the base writes onEmitter, one byte

    /// The work of one update, called once for the whole system whatever onEmitter is: a type picks its
    /// particles with Particle::canAffect().
    /// @param system       never null; its quota must stay as it is
    /// @param timeElapsed  seconds, clamped
    virtual void _affect(ParticleSystem *system, float timeElapsed) = 0;

    /// Called for each new particle of the affector's emitter, after the emitter has initialised it.
    /// @param offset  how far along the system's own way it is born
    virtual void _initParticle(Particle *particle, D3DXVECTOR3 const &offset);

    virtual void setOnEmitter(unsigned char emitter) { onEmitter = emitter; } ///< 255 for all emitters
    virtual unsigned char getOnEmitter() const { return onEmitter; }

    /// Is it this emitter's, by number? 255 is a number like any other here.
    virtual bool isOnEmitter(unsigned char emitter) const { return emitter == onEmitter; }

    /// Makes another affector of the same type like this one. A type calls the base and copies its own.
    virtual void copyParametersToBinary(ParticleAffector *other) const;

    virtual char const *getType() const; ///< the factory's
    virtual ParticleAffectorFactory *getFactory() const { return factory; }

    static AffectorCommands::CmdOnEmitter msOnEmitterCmd;

protected:
    /// Enters the parameter "onemitter" in this object's dictionary; nothing if it has none.
    void addBaseParameters();

    ParticleAffectorFactory *factory; ///< not owned
    std::uint8_t onEmitter = 255;
};

/// Makes and destroys the affectors of one type; a plugin registers it with
/// ParticleSystemMgr::addAffectorFactory().
///
/// @par Ownership  The plugin's. It must outlive every affector that came from it.
class QEL_API ParticleAffectorFactory {
public:
    ParticleAffectorFactory() = default;
    ParticleAffectorFactory(ParticleAffectorFactory const &) = default;
    ParticleAffectorFactory &operator=(ParticleAffectorFactory const &) = default;
    virtual ~ParticleAffectorFactory();

    virtual char const *getType() const = 0; ///< the type's name in scripts
    virtual ParticleAffector *createAffector() = 0;

    /// Makes an affector and lets it read its parameters from the stream.
    virtual ParticleAffector *createAffector(cFile &file) = 0;

    virtual void destroyAffector(ParticleAffector *affector); ///< the base deletes it; null is allowed
};

namespace AffectorCommands {

/// "onemitter"
class QEL_API CmdOnEmitter : public ParamCommand {
public:
    String doGet(void const *target) override;
    void doSet(void *target, String const &value) override;
};

} // namespace AffectorCommands

} // namespace Qel
