#pragma once

#include "System/File/file.h"
#include "System/Graphics/particle/particle.h"
#include "System/Graphics/particle/particleAffector.h"
#include "System/Graphics/particle/particleEmitter.h"
#include "System/Graphics/particle/particleSystem.h"
#include "System/Graphics/particle/particleSystemMgr.h"

#include <functional>
#include <memory>
#include <string>

namespace test {

/// What emitters and affectors have been asked, in order.
inline std::string &particleTrace()
{
    static std::string trace;
    return trace;
}

/// An emitter of all that the base can do, and nothing of its own.
class DotEmitter : public Qel::ParticleEmitter {
public:
    explicit DotEmitter(Qel::ParticleEmitterFactory *maker) : ParticleEmitter(maker)
    {
        if (createParamDictionary("EmitterDot")) {
            addBaseParameters();
        }
    }

    using ParticleEmitter::genConstantEmissionCount;

    D3DXVECTOR3 const &upward() const { return up; }

    void _initEmitter() override {}
    void _deserialize(Qel::cFile &file) override { ParticleEmitter::_deserialize(file); }
    void _serialize(Qel::cFile &file) override { ParticleEmitter::_serialize(file); }
    unsigned short genEmissionCount(float dt) override
    {
        particleTrace() += "count ";
        return genConstantEmissionCount(dt);
    }
    void _initParticle(Qel::Particle *particle, D3DXVECTOR3 const &offset) override
    {
        particleTrace() += "born ";
        ParticleEmitter::_initParticle(particle, offset);
        particle->position = getPosition() + offset;
        genEmissionDirection(particle->direction);
        genEmissionVelocity(particle->direction);
        particle->timeToLive = particle->totalTimeToLive = genEmissionTTL();
        particle->setRotation(genRotationAngle());
    }
};

/// Notes when it is called, and does then what a test wants.
class NoteAffector : public Qel::ParticleAffector {
public:
    explicit NoteAffector(Qel::ParticleAffectorFactory *maker) : ParticleAffector(maker)
    {
        if (createParamDictionary("AffectorNote")) {
            addBaseParameters();
        }
    }

    std::function<void(Qel::ParticleSystem &)> onAffect;

    void _initAffector() override {}
    void _deserialize(Qel::cFile &file) override { ParticleAffector::_deserialize(file); }
    void _serialize(Qel::cFile &file) override { ParticleAffector::_serialize(file); }
    void _affect(Qel::ParticleSystem *system, float) override
    {
        particleTrace() += "affect" + std::to_string(system->getActiveCount()) + ' ';
        if (onAffect) {
            onAffect(*system);
        }
    }
    void _initParticle(Qel::Particle *particle, D3DXVECTOR3 const &) override
    {
        particleTrace() += "note" + std::to_string(particle->emitterId) + ' ';
    }
};

/// A manager with the types "Dot" and "Note", and how many of each there are.
class Particles {
public:
    Particles()
    {
        particleTrace().clear();
        manager.addEmitterFactory(&dots);
        manager.addAffectorFactory(&notes);
    }

    class Dots : public Qel::ParticleEmitterFactory {
    public:
        int alive = 0;
        char const *getType() const override { return "Dot"; }
        Qel::ParticleEmitter *createEmitter() override
        {
            ++alive;
            return std::make_unique<DotEmitter>(this).release();
        }
        Qel::ParticleEmitter *createEmitter(Qel::cFile &file) override
        {
            Qel::ParticleEmitter *const emitter = createEmitter();
            emitter->_deserialize(file);
            return emitter;
        }
        void destroyEmitter(Qel::ParticleEmitter *emitter) override
        {
            --alive;
            ParticleEmitterFactory::destroyEmitter(emitter);
        }
    };

    class Notes : public Qel::ParticleAffectorFactory {
    public:
        int alive = 0;
        char const *getType() const override { return "Note"; }
        Qel::ParticleAffector *createAffector() override
        {
            ++alive;
            return std::make_unique<NoteAffector>(this).release();
        }
        Qel::ParticleAffector *createAffector(Qel::cFile &file) override
        {
            Qel::ParticleAffector *const affector = createAffector();
            affector->_deserialize(file);
            return affector;
        }
        void destroyAffector(Qel::ParticleAffector *affector) override
        {
            --alive;
            ParticleAffectorFactory::destroyAffector(affector);
        }
    };

    Dots dots;
    Notes notes;
    Qel::ParticleSystemMgr manager;
};

} // namespace test
