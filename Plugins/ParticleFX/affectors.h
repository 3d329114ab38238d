#pragma once

#include "field.h"

#include "System/Graphics/particle/particle.h"
#include "System/Graphics/particle/particleAffector.h"
#include "System/Graphics/particle/particleSystem.h"

#include <memory>

namespace fx {

/// Dictionary, stream and copy of an affector, which says its name, its parameters and its fields, and the
/// walk over the particles that are its own and still live.
/// @tparam Type  has `typeName`, `addParameters(ParamDictionary &)`, `transfer(Stream &)` and
///               `begin(float dt)`, which gives what is called with each particle
template <class Type>
class Affector : public Qel::ParticleAffector {
public:
    explicit Affector(Qel::ParticleAffectorFactory *maker) : ParticleAffector(maker)
    {
        if (createParamDictionary(Qel::String("Affector") + Type::typeName)) {
            addBaseParameters();
            Type::addParameters(*getParamDictionary());
        }
    }

    void _initAffector() override {}
    void _deserialize(Qel::cFile &file) override
    {
        ParticleAffector::_deserialize(file);
        Reader reader{file};
        self().transfer(reader);
    }
    void _serialize(Qel::cFile &file) override
    {
        ParticleAffector::_serialize(file);
        Writer writer{file};
        self().transfer(writer);
    }
    void copyParametersToBinary(Qel::ParticleAffector *other) const override
    {
        static_cast<Type &>(*other) = static_cast<Type const &>(*this);
    }
    void _affect(Qel::ParticleSystem *system, float dt) override
    {
        auto const change = self().begin(dt);
        Qel::Particle *const particles = system->getParticles();
        unsigned int const count = system->getActiveCount();
        unsigned int const on = getOnEmitter();
        for (unsigned int i = 0; i < count; ++i) {
            if (particles[i].canAffect(on) && !particles[i].isExpired()) {
                change(particles[i]);
            }
        }
    }

private:
    Type &self() { return static_cast<Type &>(*this); }
};

class LinearForce final : public Affector<LinearForce> {
public:
    using Affector::Affector;
    static constexpr char const *typeName = "LinearForce";
    static void addParameters(Qel::ParamDictionary &dictionary);
    template <class Stream>
    void transfer(Stream &stream)
    {
        stream(m_force);
    }
    auto begin(float dt) const
    {
        return [push = m_force * dt](Qel::Particle &particle) { particle.direction += push; };
    }

private:
    D3DXVECTOR3 m_force{0, -9.81f, 0};
};

class GravityPoint final : public Affector<GravityPoint> {
public:
    using Affector::Affector;
    static constexpr char const *typeName = "GravityPoint";
    static void addParameters(Qel::ParamDictionary &dictionary);
    template <class Stream>
    void transfer(Stream &stream)
    {
        stream(m_position);
        stream(m_strength);
        stream(m_falloff);
        stream(m_leastDistance);
    }
    auto begin(float dt) const
    {
        return [this, dt](Qel::Particle &particle) { particle.direction += pull(particle.position) * dt; };
    }

private:
    D3DXVECTOR3 pull(D3DXVECTOR3 const &at) const;

    D3DXVECTOR3 m_position{0, 0, 0};
    float m_strength = 10;
    float m_falloff = 0;
    float m_leastDistance = 0.1f;
};

class Scale final : public Affector<Scale> {
public:
    using Affector::Affector;
    static constexpr char const *typeName = "Scale";
    static void addParameters(Qel::ParamDictionary &dictionary);
    template <class Stream>
    void transfer(Stream &stream)
    {
        stream(m_rate);
    }
    auto begin(float dt) const
    {
        return [growth = m_rate * dt](Qel::Particle &particle) {
            float const size = particle.size + growth;
            particle.size = size > 0 ? size : 0;
        };
    }

private:
    float m_rate = 1;
};

class Rotate final : public Affector<Rotate> {
public:
    using Affector::Affector;
    static constexpr char const *typeName = "Rotate";
    static void addParameters(Qel::ParamDictionary &dictionary);
    template <class Stream>
    void transfer(Stream &stream)
    {
        stream(m_least);
        stream(m_most);
    }
    auto begin(float dt) const
    {
        return [dt](Qel::Particle &particle) {
            particle.setRotation(particle.rotation + particle.rotationSpeed * dt);
        };
    }
    void _initParticle(Qel::Particle *particle, D3DXVECTOR3 const &offset) override;

private:
    float m_least = 90; // degrees a second
    float m_most = 90;
};

class Drag final : public Affector<Drag> {
public:
    using Affector::Affector;
    static constexpr char const *typeName = "Drag";
    static void addParameters(Qel::ParamDictionary &dictionary);
    template <class Stream>
    void transfer(Stream &stream)
    {
        stream(m_drag);
    }
    auto begin(float dt) const
    {
        return [left = share(dt)](Qel::Particle &particle) { particle.direction *= left; };
    }

private:
    float share(float dt) const; // of the speed, that is left after that time

    float m_drag = 1;
};

template <class Type>
class AffectorFactory final : public Qel::ParticleAffectorFactory {
public:
    char const *getType() const override { return Type::typeName; }
    Qel::ParticleAffector *createAffector() override { return std::make_unique<Type>(this).release(); }
    Qel::ParticleAffector *createAffector(Qel::cFile &file) override
    {
        auto affector = std::make_unique<Type>(this);
        affector->_deserialize(file);
        return affector.release();
    }
};

} // namespace fx
