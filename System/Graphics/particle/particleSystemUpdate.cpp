#include "System/Graphics/particle/particleAffector.h"
#include "System/Graphics/particle/particleEmitter.h"
#include "System/Graphics/particle/particleSystem.h"
#include "System/System/logManager.h"

#include "Support/PoolHeap/poolHeap.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <utility>

#include <emmintrin.h>

namespace Qel {

namespace {

bool isZero(D3DXVECTOR3 const &v)
{
    return v.x == 0 && v.y == 0 && v.z == 0;
}

constexpr int lastLaneBit = 8;

} // namespace

// What it steps, and in which order, is seen from outside: by affectors, emitters and a seeded generator.
void ParticleSystem::update(float dt)
{
    // What is no number is a step of the least length.
    if (!(dt >= timeClampMin)) {
        dt = timeClampMin;
    }
    if (dt > timeClampMax) {
        dt = timeClampMax;
    }
    timeAlive += dt;
    if (activeCount == quota && LogManager::checkDefLogLevel(3)) {
        LogManager::defLevelMessage("ParticleSystem::update() psys='%s' template='%s' quota=%d free=%d\n"
                                    " No free particles; increase the particle quota!\n",
                                    name.c_str(), templateName.c_str(), static_cast<int>(quota), 0);
    }
    if (isWalkUnbroken()) {
        beginExpiry();
        walk<true>(dt);
    } else {
        step(dt);
    }
    _updateBounds();
    compact();
    motion = D3DXVECTOR3(0, 0, 0);
    if (activeCount == 0) {
        freePool();
    }
    if (m_nextQuota) {
        setParticleQuota(*std::exchange(m_nextQuota, std::nullopt));
    }
}

// Whether nothing can see or change the particles between their expiry and their movement.
bool ParticleSystem::isWalkUnbroken() const
{
    return (bound || isZero(motion)) && !(emitting && !emitters.empty()) &&
           !(affecting && !affectors.empty());
}

void ParticleSystem::step(float dt)
{
    _expire(dt);
    if (!bound) {
        _moveParticles(motion);
    }
    m_isStepping = true;
    try {
        if (emitting) {
            _triggerEmitters(dt);
        }
        if (affecting) {
            _triggerAffectors(dt);
        }
    } catch (...) {
        m_isStepping = false;
        throw;
    }
    m_isStepping = false;
    _applyUpdates(dt);
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
    if (m_isStepping) {
        m_nextQuota = newQuota; // somebody holds on to the pool
        return;
    }
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

void ParticleSystem::beginExpiry()
{
    expired.clear();
    expiredUsed = 0;
    alive = activeCount != 0;
}

void ParticleSystem::_expire(float dt)
{
    beginExpiry();
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
    if (isZero(delta)) {
        return;
    }
    // To the power of 0 every age is 1, and to that of 1 it is itself.
    bool const isPlain = boundExpo == 0 || boundExpo == 1;
    for (std::uint32_t i = 0; i < activeCount; ++i) {
        Particle &particle = particles[i];
        double const age = 1.0 - double{particle.timeToLive} / double{particle.totalTimeToLive};
        double const share = isPlain ? (boundExpo == 0 ? 1.0 : age) : std::pow(age, double{boundExpo});
        // A lifetime of 0 has no age: such a particle stays where it is in the world.
        particle.position -= std::isfinite(share) ? delta * static_cast<float>(share) : delta;
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
    // A callback may have taken emitters away.
    for (std::size_t i = 0; i < m_counts.size() && i < emitters.size(); ++i) {
        unsigned int const count = m_counts[i];
        for (unsigned int j = 0; j < count && i < emitters.size(); ++j) {
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

namespace {

// The animation of the emitter that was asked last: particles of one emitter mostly stand together.
class Animation {
public:
    explicit Animation(std::vector<ParticleEmitter *> const &emitters) : m_emitters(emitters) {}

    void step(Particle &particle)
    {
        // The emitter of an orphan is gone: it keeps its frame.
        if (particle.emitterId >= m_emitters.size()) {
            return;
        }
        if (m_emitter != m_emitters[particle.emitterId]) {
            m_emitter = m_emitters[particle.emitterId];
            m_speed = m_emitter->getAnimSpeed();
            m_frames = m_emitter->getAnimFrames();
        }
        if (m_speed > 0) {
            float const frame =
                std::fmod(m_speed * (particle.totalTimeToLive - particle.timeToLive), m_frames);
            particle.currentFrame = frame > 0 ? static_cast<std::uint8_t>(frame) : std::uint8_t{0};
        }
    }

private:
    std::vector<ParticleEmitter *> const &m_emitters;
    ParticleEmitter const *m_emitter = nullptr;
    float m_speed = 0;
    float m_frames = 0;
};

} // namespace

// A record begins with two rows of four: position and size, direction and time to live. Lanes past the third
// are left as they are by taking 0 off and adding -0.
template <bool expires>
void ParticleSystem::walk(float dt)
{
    static_assert(offsetof(Particle, size) == 12 && offsetof(Particle, direction) == 16 &&
                  offsetof(Particle, timeToLive) == 28);
    if (activeCount == 0) {
        return;
    }
    __m128 const inDirection = _mm_castsi128_ps(_mm_setr_epi32(-1, -1, -1, 0));
    __m128 const noChange = _mm_setr_ps(0, 0, 0, -0.0f);
    __m128 const step = _mm_setr_ps(dt, dt, dt, 0);
    __m128 const aging = _mm_setr_ps(0, 0, 0, dt);
    Animation animation(emitters);
    Particle *const pool = particles;
    std::uint32_t const count = activeCount;

    auto const move = [&](std::uint32_t i) {
        float *const rows = &pool[i].position.x;
        __m128 place = _mm_loadu_ps(rows);
        __m128 motionRow = _mm_loadu_ps(rows + 4);
        if constexpr (expires) {
            motionRow = _mm_sub_ps(motionRow, aging);
            _mm_storeu_ps(rows + 4, motionRow);
            if (_mm_movemask_ps(_mm_cmplt_ps(motionRow, _mm_setzero_ps())) >= lastLaneBit) {
                place = _mm_and_ps(place, inDirection);
                expired.push_back(i);
            }
        }
        __m128 const way = _mm_or_ps(_mm_and_ps(_mm_mul_ps(motionRow, step), inDirection), noChange);
        place = _mm_add_ps(place, way);
        _mm_storeu_ps(rows, place);
        if ((pool[i].flags & Particle::ANIMATED) != 0) {
            animation.step(pool[i]);
        }
        return place;
    };

    // Two chains, since each step of one has to wait for the step before it.
    __m128 least = move(0);
    __m128 most = _mm_and_ps(least, inDirection);
    most = _mm_max_ps(least, most);
    __m128 least2 = least;
    __m128 most2 = most;
    std::uint32_t i = 1;
    for (; i + 1 < count; i += 2) {
        __m128 const first = move(i);
        __m128 const second = move(i + 1);
        least = _mm_min_ps(first, least);
        most = _mm_max_ps(first, most);
        least2 = _mm_min_ps(second, least2);
        most2 = _mm_max_ps(second, most2);
    }
    if (i < count) {
        __m128 const last = move(i);
        least = _mm_min_ps(last, least);
        most = _mm_max_ps(last, most);
    }
    _mm_storeu_ps(&m_least.x, _mm_min_ps(least2, least));
    _mm_storeu_ps(&m_most.x, _mm_max_ps(most2, most));
}

void ParticleSystem::_applyUpdates(float dt)
{
    walk<false>(dt);
}

void ParticleSystem::_updateBounds()
{
    if (activeCount == 0) {
        boundingBox = cBoundingBoxAA();
        return;
    }
    D3DXVECTOR3 const room(m_most.w, m_most.w, m_most.w);
    boundingBox.setMinMax(D3DXVECTOR3(m_least.x, m_least.y, m_least.z) - room,
                          D3DXVECTOR3(m_most.x, m_most.y, m_most.z) + room);
}

// Those that stay move down over the expired ones that were not used again, in their order.
void ParticleSystem::compact()
{
    if (expiredUsed < expired.size()) {
        std::uint32_t to = expired[expiredUsed];
        for (std::size_t next = expiredUsed; next < expired.size(); ++next) {
            std::uint32_t const from = expired[next] + 1;
            std::uint32_t const end = next + 1 < expired.size() ? expired[next + 1] : activeCount;
            std::copy(particles + from, particles + end, particles + to);
            to += end - from;
        }
        activeCount = to;
    }
    expired.clear();
    expiredUsed = 0;
}

} // namespace Qel
