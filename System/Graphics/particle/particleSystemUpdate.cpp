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

constexpr std::ptrdiff_t blockSize = 64;

float lastLane(__m128 row)
{
    return _mm_cvtss_f32(_mm_shuffle_ps(row, row, 0xFF));
}

__m128 withLastLane(__m128 row, float value)
{
    __m128 const pair = _mm_shuffle_ps(_mm_set_ss(value), row, _MM_SHUFFLE(2, 2, 0, 0));
    return _mm_shuffle_ps(row, pair, _MM_SHUFFLE(0, 2, 1, 0));
}

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
    Particle *const end = particles + activeCount;
    for (Particle *first = particles; first != end;) {
        Particle *const last = end - first > blockSize ? first + blockSize : end;
        float shortest = 0;
        float shortest2 = 0;
        Particle *at = first;
        for (; last - at > 1; at += 2) {
            at[0].timeToLive -= dt;
            at[1].timeToLive -= dt;
            shortest = std::min(shortest, at[0].timeToLive);
            shortest2 = std::min(shortest2, at[1].timeToLive);
        }
        if (at != last) {
            at->timeToLive -= dt;
            shortest = std::min(shortest, at->timeToLive);
        }
        if (std::min(shortest, shortest2) < 0) {
            noteExpired(first, last);
        }
        first = last;
    }
}

// Of a block whose times have been stepped. Gives the largest size that is left in it.
float ParticleSystem::noteExpired(Particle *first, Particle *last)
{
    float largest = 0;
    for (; first != last; ++first) {
        if (first->timeToLive < 0) {
            first->size = 0;
            expired.push_back(static_cast<unsigned int>(first - particles));
        }
        largest = std::max(largest, first->size);
    }
    return largest;
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
    m_counts.assign(emitters.size(), 0);
    std::uint64_t sum = 0;
    // What is called here may take emitters and affectors away, and add affectors.
    for (std::size_t i = 0; i < m_counts.size() && i < emitters.size(); ++i) {
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
            for (std::size_t k = 0; k < affectors.size(); ++k) {
                ParticleAffector *const affector = affectors[k];
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
    for (std::size_t k = 0; k < affectors.size(); ++k) {
        affectors[k]->_affect(this, dt);
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

// A record begins with two rows of four: position and size, direction and time to live.
//
// Few particles expire or are animated in one step, so a block is moved first without a look at that, and
// looked at again where it has some. Nothing is called while a block is moved: all constants and the bounds
// so far stay in registers.
template <bool expires>
void ParticleSystem::walk(float dt)
{
    static_assert(offsetof(Particle, size) == 12 && offsetof(Particle, direction) == 16 &&
                  offsetof(Particle, timeToLive) == 28);
    if (activeCount == 0) {
        return;
    }
    __m128 const inDirection = _mm_castsi128_ps(_mm_setr_epi32(-1, -1, -1, 0));
    __m128 const step = _mm_setr_ps(dt, dt, dt, 0);
    __m128 const aging = _mm_setr_ps(0, 0, 0, dt);
    Animation animation(emitters);
    __m128 shortest = _mm_setzero_ps();
    __m128 shortest2 = shortest;
    unsigned int flags = 0;

    auto const move = [&](Particle *particle, __m128 &briefest) {
        float *const rows = &particle->position.x;
        __m128 motionRow = _mm_loadu_ps(rows + 4);
        if constexpr (expires) {
            motionRow = _mm_sub_ps(motionRow, aging);
            _mm_storeu_ps(rows + 4, motionRow);
            briefest = _mm_min_ps(motionRow, briefest);
        }
        // Whatever the lifetime is, nothing of it gets into the size.
        __m128 const way = _mm_and_ps(_mm_mul_ps(motionRow, step), inDirection);
        __m128 const place = _mm_add_ps(way, _mm_loadu_ps(rows));
        _mm_storeu_ps(rows, place);
        flags |= particle->flags;
        return place;
    };

    // The first is moved ahead of its block, to begin the bounds with; then two chains, since each step of
    // one has to wait for the step before it. The largest size is in the last lane.
    Particle *const end = particles + activeCount;
    Particle *at = particles;
    __m128 least = move(at++, shortest);
    __m128 most = _mm_max_ps(least, _mm_and_ps(least, inDirection));
    __m128 least2 = least;
    __m128 most2 = _mm_and_ps(least, inDirection);
    for (Particle *first = particles; first != end;) {
        Particle *const last = end - first > blockSize ? first + blockSize : end;
        float const marginBefore = first == particles ? 0 : std::max(lastLane(most), lastLane(most2));
        for (; last - at > 1; at += 2) {
            __m128 const one = move(at, shortest);
            __m128 const other = move(at + 1, shortest2);
            least = _mm_min_ps(one, least);
            most = _mm_max_ps(one, most);
            least2 = _mm_min_ps(other, least2);
            most2 = _mm_max_ps(other, most2);
        }
        if (at != last) {
            __m128 const one = move(at++, shortest);
            least = _mm_min_ps(one, least);
            most = _mm_max_ps(one, most);
        }
        if (lastLane(_mm_min_ps(shortest, shortest2)) < 0) {
            float const margin = std::max(marginBefore, noteExpired(first, last));
            most = withLastLane(_mm_max_ps(most, most2), margin);
            most2 = most;
            shortest = shortest2 = _mm_setzero_ps();
        }
        if ((flags & Particle::ANIMATED) != 0) {
            std::for_each(first, last, [&](Particle &particle) {
                if ((particle.flags & Particle::ANIMATED) != 0) {
                    animation.step(particle);
                }
            });
            flags = 0;
        }
        first = last;
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
