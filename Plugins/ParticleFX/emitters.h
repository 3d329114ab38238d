#pragma once

#include "field.h"

#include "System/Graphics/particle/particle.h"
#include "System/Graphics/particle/particleEmitter.h"

#include <memory>

namespace fx {

/// What the shapes have in common: particles are born somewhere in the shape, and leave along the emitter's
/// direction or straight out of the shape.
class ShapeEmitter : public Qel::ParticleEmitter {
public:
    using ParticleEmitter::ParticleEmitter;

    void _initEmitter() override {}
    unsigned short genEmissionCount(float dt) override { return genConstantEmissionCount(dt); }
    void _initParticle(Qel::Particle *particle, D3DXVECTOR3 const &offset) override;

protected:
    /// Draws a place in the shape.
    /// @param outward  set to the unit vector that leads out of the shape there
    /// @return relative to the emitter
    virtual D3DXVECTOR3 place(D3DXVECTOR3 &outward) const = 0;

    D3DXVECTOR3 around(float turn) const; ///< a unit vector normal to the direction

    bool m_isOutward = false;
};

/// Dictionary, stream and copy of a shape, which says its name, its parameters and its fields.
/// @tparam Type  has `typeName`, `addParameters(ParamDictionary &)` and `transfer(Stream &)`
template <class Type>
class Shape : public ShapeEmitter {
public:
    explicit Shape(Qel::ParticleEmitterFactory *maker) : ShapeEmitter(maker)
    {
        if (createParamDictionary(Qel::String("Emitter") + Type::typeName)) {
            addBaseParameters();
            Type::addParameters(*getParamDictionary());
        }
    }

    void _deserialize(Qel::cFile &file) override
    {
        ParticleEmitter::_deserialize(file);
        Reader reader{file};
        self().transfer(reader);
    }
    void _serialize(Qel::cFile &file) override
    {
        ParticleEmitter::_serialize(file);
        Writer writer{file};
        self().transfer(writer);
    }
    void copyParametersToBinary(Qel::ParticleEmitter *other) const override
    {
        static_cast<Type &>(*other) = static_cast<Type const &>(*this);
        ParticleEmitter::copyParametersToBinary(other);
    }

private:
    Type &self() { return static_cast<Type &>(*this); }
};

class Point final : public Shape<Point> {
public:
    using Shape::Shape;
    static constexpr char const *typeName = "Point";
    static void addParameters(Qel::ParamDictionary &) {}
    template <class Stream>
    void transfer(Stream &)
    {
    }

private:
    D3DXVECTOR3 place(D3DXVECTOR3 &outward) const override;
};

class Box final : public Shape<Box> {
public:
    using Shape::Shape;
    static constexpr char const *typeName = "Box";
    static void addParameters(Qel::ParamDictionary &dictionary);
    template <class Stream>
    void transfer(Stream &stream)
    {
        stream(m_edges);
        stream(m_isOutward);
    }

private:
    D3DXVECTOR3 place(D3DXVECTOR3 &outward) const override;

    D3DXVECTOR3 m_edges{1, 1, 1};
};

class Sphere final : public Shape<Sphere> {
public:
    using Shape::Shape;
    static constexpr char const *typeName = "Sphere";
    static void addParameters(Qel::ParamDictionary &dictionary);
    template <class Stream>
    void transfer(Stream &stream)
    {
        stream(m_radius);
        stream(m_innerRadius);
        stream(m_isOutward);
    }

private:
    D3DXVECTOR3 place(D3DXVECTOR3 &outward) const override;

    float m_radius = 1;
    float m_innerRadius = 0;
};

/// A flat ring around the direction.
class Ring final : public Shape<Ring> {
public:
    using Shape::Shape;
    static constexpr char const *typeName = "Ring";
    static void addParameters(Qel::ParamDictionary &dictionary);
    template <class Stream>
    void transfer(Stream &stream)
    {
        stream(m_radius);
        stream(m_innerRadius);
        stream(m_isOutward);
    }

private:
    D3DXVECTOR3 place(D3DXVECTOR3 &outward) const override;

    float m_radius = 1;
    float m_innerRadius = 1;
};

/// A cylinder along the direction, the emitter's position in its middle.
class Cylinder final : public Shape<Cylinder> {
public:
    using Shape::Shape;
    static constexpr char const *typeName = "Cylinder";
    static void addParameters(Qel::ParamDictionary &dictionary);
    template <class Stream>
    void transfer(Stream &stream)
    {
        stream(m_radius);
        stream(m_innerRadius);
        stream(m_height);
        stream(m_isOutward);
    }

private:
    D3DXVECTOR3 place(D3DXVECTOR3 &outward) const override;

    float m_radius = 1;
    float m_innerRadius = 0;
    float m_height = 1;
};

template <class Type>
class ShapeFactory final : public Qel::ParticleEmitterFactory {
public:
    char const *getType() const override { return Type::typeName; }
    Qel::ParticleEmitter *createEmitter() override { return std::make_unique<Type>(this).release(); }
    Qel::ParticleEmitter *createEmitter(Qel::cFile &file) override
    {
        auto emitter = std::make_unique<Type>(this);
        emitter->_deserialize(file);
        return emitter.release();
    }
};

} // namespace fx
