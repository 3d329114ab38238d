#include "affectors.h"

#include "System/math/rand.h"

#include <algorithm>
#include <cmath>

namespace fx {

void LinearForce::addParameters(Qel::ParamDictionary &dictionary)
{
    addField<&LinearForce::m_force>(dictionary, "force", "The acceleration, units per second and second.");
}

void GravityPoint::addParameters(Qel::ParamDictionary &dictionary)
{
    addField<&GravityPoint::m_position>(dictionary, "position", "The point that pulls.");
    addField<&GravityPoint::m_strength>(dictionary, "strength",
                                        "The acceleration at distance 1; below 0 it pushes.");
    addField<&GravityPoint::m_falloff>(
        dictionary, "falloff", "By which power of the distance it gets weaker: 0 not at all, 2 as gravity.");
    addField<&GravityPoint::m_leastDistance>(dictionary, "distance_min",
                                             "Nearer than this counts as this distance.");
}

D3DXVECTOR3 GravityPoint::pull(D3DXVECTOR3 const &at) const
{
    D3DXVECTOR3 const way = m_position - at;
    float const distance = D3DXVec3Length(&way);
    if (!(distance > 0)) {
        return {0, 0, 0};
    }
    float const strength = m_strength / std::pow(std::max(distance, m_leastDistance), m_falloff);
    return way * (strength / distance);
}

void Scale::addParameters(Qel::ParamDictionary &dictionary)
{
    addField<&Scale::m_rate>(dictionary, "rate",
                             "What is added to the size each second; never below size 0.");
}

void Rotate::addParameters(Qel::ParamDictionary &dictionary)
{
    addField<&Rotate::m_least>(dictionary, "speed_min", "The least speed, degrees per second.");
    addField<&Rotate::m_most>(dictionary, "speed_max", "The greatest speed, degrees per second.");
}

void Rotate::_initParticle(Qel::Particle *particle, D3DXVECTOR3 const &)
{
    constexpr float radiansPerDegree = 0.017453292f;
    float const speed = m_least == m_most ? m_least : Qel::cRand::random(m_least, m_most);
    particle->setRotationSpeed(speed * radiansPerDegree);
}

void Drag::addParameters(Qel::ParamDictionary &dictionary)
{
    addField<&Drag::m_drag>(
        dictionary, "drag",
        "How fast they slow down: after 1 / drag seconds 37 percent of the speed are left.");
}

float Drag::share(float dt) const
{
    return std::exp(-m_drag * dt);
}

} // namespace fx
