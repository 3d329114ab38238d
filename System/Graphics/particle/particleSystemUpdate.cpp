#include "System/Graphics/particle/particleAffector.h"
#include "System/Graphics/particle/particleEmitter.h"
#include "System/Graphics/particle/particleSystem.h"
#include "System/System/logManager.h"

#include "Support/PoolHeap/poolHeap.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <numeric>

namespace Qel {

// What it steps, and in which order, is seen from outside: by affectors, emitters and a seeded generator.
void ParticleSystem::update(float dt)
{
    if (dt < timeClampMin) {
        dt = timeClampMin;
    } else if (dt > timeClampMax) {
        dt = timeClampMax;
    }
    timeAlive += dt;
    if (activeCount == quota && LogManager::checkDefLogLevel(3)) {
        LogManager::defLevelMessage("ParticleSystem::update() psys='%s' template='%s' quota=%d free=%d\n"
                                    " No free particles; increase the particle quota!\n",
                                    name.c_str(), templateName.c_str(), static_cast<int>(quota), 0);
    }
    _expire(dt);
    if (!bound) {
        _moveParticles(motion);
    }
    if (emitting) {
        _triggerEmitters(dt);
    }
    if (affecting) {
        _triggerAffectors(dt);
    }
    _applyUpdates(dt);
    _updateBounds();
    compact();
    motion = D3DXVECTOR3(0, 0, 0);
    if (activeCount == 0) {
        freePool();
    }
}

void ParticleSystem::fastForward(float time, float interval)
{
    // An interval that adds nothing to the sum any more would go on for ever.
    for (float sum = 0; time > sum;) {
        update(interval);
        float const next = sum + interval;
        if (!(next > sum)) {
            return;
        }
        sum = next;
    }
}

void ParticleSystem::moveParticleSystem(D3DXVECTOR3 const &delta)
{
    if (!bound) {
        motion += delta;
    }
}

// The records are made when they are first needed: a large quota costs no memory until it is used.
void ParticleSystem::makePool()
{
    if (quota != 0 && quota <= mostParticles) {
        particles = static_cast<Particle *>(poolheap_malloc(std::size_t{quota} * sizeof(Particle)));
    }
}

void ParticleSystem::freePool()
{
    poolheap_free(particles);
    particles = nullptr;
    activeCount = 0;
    m_constructed = 0;
    expired.clear();
    expiredUsed = 0;
}

void ParticleSystem::setParticleQuota(unsigned int newQuota)
{
    quota = newQuota;
    std::uint32_t const wanted = std::min(activeCount, newQuota);
    freePool();
    if (wanted == 0) {
        return;
    }
    makePool();
    if (particles != nullptr) {
        std::uninitialized_default_construct_n(particles, wanted);
        activeCount = m_constructed = wanted;
    }
}

Particle *ParticleSystem::addParticle()
{
    if (particles == nullptr) {
        makePool();
    }
    if (particles != nullptr && expiredUsed < expired.size()) {
        return particles + expired[expiredUsed++];
    }
    if (particles != nullptr && activeCount < quota) {
        Particle *const place = particles + activeCount++;
        if (m_constructed < activeCount) {
            std::construct_at(place);
            m_constructed = activeCount;
        }
        return place;
    }
    if (LogManager::checkDefLogLevel(1)) {
        LogManager::defLevelMessage("ParticleSystem::addParticle() psys=%s template=%s quota=%d\n",
                                    name.c_str(), templateName.c_str(), static_cast<int>(quota));
    }
    return nullptr;
}

void ParticleSystem::_expire(float dt)
{
    expired.clear();
    expiredUsed = 0;
    alive = activeCount != 0;
    for (std::uint32_t i = 0; i < activeCount; ++i) {
        particles[i].timeToLive -= dt;
        if (particles[i].timeToLive < 0) {
            particles[i].size = 0;
            expired.push_back(i);
        }
    }
}

void ParticleSystem::_moveParticles(D3DXVECTOR3 const &delta)
{
    for (std::uint32_t i = 0; i < activeCount; ++i) {
        Particle &particle = particles[i];
        double const age = 1.0 - double{particle.timeToLive} / double{particle.totalTimeToLive};
        double const share = std::pow(age, double{boundExpo});
        // A lifetime of 0 has no age: such a particle stays where it is in the world.
        particle.position -= std::isnan(share) ? delta : delta * static_cast<float>(share);
    }
}

void ParticleSystem::_triggerEmitters(float dt)
{
    m_counts.resize(emitters.size());
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < m_counts.size(); ++i) {
        ParticleEmitter &emitter = *emitters[i];
        float const delay = emitter.getStartDelay();
        if (delay > 0) {
            m_counts[i] = 0;
            emitter.setStartDelay(std::max(delay - dt, 0.0f));
        } else {
            m_counts[i] = emitter.genEmissionCount(dt);
        }
        sum += m_counts[i];
    }
    if (sum > quota) {
        for (unsigned short &count : m_counts) {
            count = static_cast<unsigned short>(std::uint64_t{count} * quota / sum);
        }
    }
    for (std::size_t i = 0; i < m_counts.size(); ++i) {
        unsigned int const count = m_counts[i];
        for (unsigned int j = 0; j < count; ++j) {
            Particle *const particle = addParticle();
            if (particle == nullptr) {
                continue;
            }
            D3DXVECTOR3 const offset = motion * (static_cast<float>(j) / static_cast<float>(count));
            emitters[i]->_initParticle(particle, offset);
            particle->emitterId = static_cast<std::uint8_t>(i);
            for (ParticleAffector *const affector : affectors) {
                unsigned char const on = affector->getOnEmitter();
                if (on == i || on == Particle::allEmitters) {
                    affector->_initParticle(particle, offset);
                }
            }
        }
    }
}

void ParticleSystem::_triggerAffectors(float dt)
{
    for (ParticleAffector *const affector : affectors) {
        affector->_affect(this, dt);
    }
}

void ParticleSystem::animate(Particle &particle) const
{
    // The emitter of an orphan is gone: it keeps its frame.
    if (particle.emitterId >= emitters.size()) {
        return;
    }
    ParticleEmitter const &emitter = *emitters[particle.emitterId];
    float const speed = emitter.getAnimSpeed();
    float const frames = emitter.getAnimFrames();
    if (speed > 0) {
        float const frame = std::fmod(speed * (particle.totalTimeToLive - particle.timeToLive), frames);
        particle.currentFrame = frame > 0 ? static_cast<std::uint8_t>(frame) : std::uint8_t{0};
    }
}

void ParticleSystem::_applyUpdates(float dt)
{
    for (std::uint32_t i = 0; i < activeCount; ++i) {
        Particle &particle = particles[i];
        particle.position += particle.direction * dt;
        if ((particle.flags & Particle::ANIMATED) != 0) {
            animate(particle);
        }
    }
}

void ParticleSystem::_updateBounds()
{
    if (activeCount == 0) {
        boundingBox = cBoundingBoxAA();
        return;
    }
    D3DXVECTOR3 least = particles[0].position;
    D3DXVECTOR3 most = least;
    float margin = 0;
    for (std::uint32_t i = 0; i < activeCount; ++i) {
        D3DXVECTOR3 const &at = particles[i].position;
        least = {std::min(least.x, at.x), std::min(least.y, at.y), std::min(least.z, at.z)};
        most = {std::max(most.x, at.x), std::max(most.y, at.y), std::max(most.z, at.z)};
        margin = std::max(margin, particles[i].size);
    }
    D3DXVECTOR3 const room(margin, margin, margin);
    boundingBox.setMinMax(least - room, most + room);
}

// Those that stay move down over the expired ones that were not used again, in their order.
void ParticleSystem::compact()
{
    if (expiredUsed < expired.size()) {
        std::uint32_t to = expired[expiredUsed];
        std::size_t next = expiredUsed;
        for (std::uint32_t from = to; from < activeCount; ++from) {
            if (next < expired.size() && expired[next] == from) {
                ++next;
            } else {
                particles[to++] = particles[from];
            }
        }
        activeCount = std::min(to, activeCount);
    }
    expired.clear();
    expiredUsed = 0;
}

} // namespace Qel
