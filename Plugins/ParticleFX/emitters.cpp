#include "emitters.h"

#include "System/math/rand.h"

#include <algorithm>
#include <cmath>

namespace fx {

namespace {

constexpr float fullTurn = 6.2831855f;

constexpr char const *outwardText = "Particles leave straight out of the shape, not along the direction.";

// Even over a disc's area (power 2) or a ball's volume (power 3).
float drawRadius(float inner, float outer, float power)
{
    float const least = std::pow(std::max(inner, 0.0f), power);
    float const most = std::pow(std::max(outer, 0.0f), power);
    return std::pow(Qel::cRand::random(least, most), 1 / power);
}

} // namespace

void ShapeEmitter::_initParticle(Qel::Particle *particle, D3DXVECTOR3 const &offset)
{
    // Its place may have been another's before, who had these.
    particle->currentFrame = 0;
    particle->rotationSpeed = 0;
    ParticleEmitter::_initParticle(particle, offset);
    D3DXVECTOR3 outward;
    particle->position = getPosition() + offset + place(outward);
    if (m_isOutward) {
        particle->direction = outward;
    } else {
        genEmissionDirection(particle->direction);
    }
    genEmissionVelocity(particle->direction);
    particle->timeToLive = particle->totalTimeToLive = genEmissionTTL();
    particle->setRotation(genRotationAngle());
}

D3DXVECTOR3 ShapeEmitter::around(float turn) const
{
    D3DXVECTOR3 side;
    D3DXVec3Cross(&side, &direction, &up);
    return up * std::cos(turn) + side * std::sin(turn);
}

D3DXVECTOR3 Point::place(D3DXVECTOR3 &outward) const
{
    outward = direction;
    return {0, 0, 0};
}

void Box::addParameters(Qel::ParamDictionary &dictionary)
{
    addField<&Box::m_edges>(dictionary, "edges", "The lengths of the box along x, y and z.");
    addField<&Box::m_isOutward>(dictionary, "outward", outwardText);
}

D3DXVECTOR3 Box::place(D3DXVECTOR3 &outward) const
{
    float const x = Qel::cRand::random(-0.5f, 0.5f) * m_edges.x;
    float const y = Qel::cRand::random(-0.5f, 0.5f) * m_edges.y;
    float const z = Qel::cRand::random(-0.5f, 0.5f) * m_edges.z;
    D3DXVECTOR3 const at(x, y, z);
    D3DXVec3Normalize(&outward, &at);
    return at;
}

void Sphere::addParameters(Qel::ParamDictionary &dictionary)
{
    addField<&Sphere::m_radius>(dictionary, "radius", "The radius of the sphere.");
    addField<&Sphere::m_innerRadius>(dictionary, "radius_inner", "The radius of the hollow inside.");
    addField<&Sphere::m_isOutward>(dictionary, "outward", outwardText);
}

D3DXVECTOR3 Sphere::place(D3DXVECTOR3 &outward) const
{
    // Slices of one height have one area of the sphere, Archimedes.
    float const height = Qel::cRand::random(-1.0f, 1.0f);
    float const turn = Qel::cRand::random(0.0f, fullTurn);
    float const width = std::sqrt(std::max(1 - height * height, 0.0f));
    outward = {width * std::cos(turn), width * std::sin(turn), height};
    return outward * drawRadius(m_innerRadius, m_radius, 3);
}

void Ring::addParameters(Qel::ParamDictionary &dictionary)
{
    addField<&Ring::m_radius>(dictionary, "radius", "The radius of the ring's outer edge.");
    addField<&Ring::m_innerRadius>(dictionary, "radius_inner", "The radius of its inner edge.");
    addField<&Ring::m_isOutward>(dictionary, "outward", outwardText);
}

D3DXVECTOR3 Ring::place(D3DXVECTOR3 &outward) const
{
    outward = around(Qel::cRand::random(0.0f, fullTurn));
    return outward * drawRadius(m_innerRadius, m_radius, 2);
}

void Cylinder::addParameters(Qel::ParamDictionary &dictionary)
{
    addField<&Cylinder::m_radius>(dictionary, "radius", "The radius of the cylinder.");
    addField<&Cylinder::m_innerRadius>(dictionary, "radius_inner", "The radius of the hollow inside.");
    addField<&Cylinder::m_height>(dictionary, "height", "Its length along the direction.");
    addField<&Cylinder::m_isOutward>(dictionary, "outward", outwardText);
}

D3DXVECTOR3 Cylinder::place(D3DXVECTOR3 &outward) const
{
    outward = around(Qel::cRand::random(0.0f, fullTurn));
    float const radius = drawRadius(m_innerRadius, m_radius, 2);
    return outward * radius + direction * (Qel::cRand::random(-0.5f, 0.5f) * m_height);
}

} // namespace fx
