#include "System/Graphics/particle/particleEmitter.h"

#include "System/File/file.h"
#include "System/Graphics/particle/particle.h"
#include "System/math/rand.h"

#include <cmath>
#include <limits>
#include <memory>

namespace Qel {

namespace {

constexpr float radiansPerDegree = 0.017453292f;
constexpr float degreesPerRadian = 57.29578f;
constexpr float fullTurn = 6.2831855f;

float draw(float min, float max)
{
    return min == max ? min : min + cRand::mt.Random01() * (max - min);
}

// The vector as a row times the upper left 3 x 3 of the matrix.
D3DXVECTOR3 turned(D3DXVECTOR3 const &v, D3DXMATRIX const &m)
{
    return {v.x * m._11 + v.y * m._21 + v.z * m._31, v.x * m._12 + v.y * m._22 + v.z * m._32,
            v.x * m._13 + v.y * m._23 + v.z * m._33};
}

D3DXVECTOR3 cross(D3DXVECTOR3 const &a, D3DXVECTOR3 const &b)
{
    D3DXVECTOR3 out;
    D3DXVec3Cross(&out, &a, &b);
    return out;
}

unsigned short toCount(float value)
{
    constexpr float largest = std::numeric_limits<unsigned short>::max();
    return value > 0 ? static_cast<unsigned short>(value < largest ? value : largest) : 0;
}

// The two ways of the stream: what is written one by one is read in the same order.
struct Writer {
    cFile &file;

    void operator()(String const &text) { file.write_string(text); }
    void operator()(D3DXVECTOR3 const &v) { file.write_vec3d(v); }
    void operator()(float value) { file.write_float(value); }
    void operator()(bool value) { file.write_8(static_cast<unsigned char>(value)); }
    void operator()(std::uint8_t value) { file.write_8(value); }
};

struct Reader {
    cFile &file;

    void operator()(String &text) { file.read_string(text); }
    void operator()(D3DXVECTOR3 &v) { file.read_vec3d(v); }
    void operator()(float &value) { file.read_float(value); } // kept where not all of it arrives
    void operator()(bool &value)
    {
        unsigned char byte;
        if (file.read_8(byte)) {
            value = byte != 0;
        }
    }
    void operator()(std::uint8_t &value) { file.read_8(value); }
};

} // namespace

ParticleEmitter::~ParticleEmitter() = default;

void ParticleEmitter::genEmissionDirection(D3DXVECTOR3 &out)
{
    if (emissionAngle == 0) {
        out = direction;
        return;
    }
    D3DXVec3Normalize(&out, &direction);
    D3DXVECTOR3 perp = cross(out, {1, 0, 0});
    if (D3DXVec3LengthSq(&perp) == 0) {
        perp = cross(out, {0, 1, 0});
    }
    D3DXVec3Normalize(&perp, &perp);
    float const deviation = draw(emissionAngleMin, emissionAngle);
    D3DXMATRIX tilt;
    D3DXMatrixRotationAxis(&tilt, &perp, deviation);
    D3DXMATRIX spin;
    D3DXMatrixRotationAxis(&spin, &out, cRand::mt.Random01() * fullTurn);
    out = turned(turned(out, tilt), spin);
}

void ParticleEmitter::genEmissionVelocity(D3DXVECTOR3 &v)
{
    v *= draw(velocityMin, velocityMax);
}

float ParticleEmitter::genEmissionTTL()
{
    return draw(timeToLiveMin, timeToLiveMax);
}

float ParticleEmitter::genRotationAngle()
{
    return draw(angle, angleMax);
}

unsigned short ParticleEmitter::genConstantEmissionCount(float timeElapsed)
{
    if (!enabled) {
        if (repeatDelayMax != 0) {
            repeatDelayRemain -= timeElapsed;
            if (repeatDelayRemain <= 0) {
                setEnabled(true);
            }
        }
        return 0;
    }
    if (emitAndDisable) {
        setEnabled(false);
        return toCount(emissionRate);
    }
    float const due = emissionRate * timeElapsed + emissionRemainder;
    unsigned short const count = toCount(due);
    float const remainder = due - static_cast<float>(count);
    // Below a whole particle, unless the rate is no sound one: that is not to pile up.
    emissionRemainder = std::fabs(remainder) < 1 ? remainder : 0;
    if (durationMax != 0) {
        durationRemain -= timeElapsed;
        if (durationRemain <= 0) {
            setEnabled(false);
        }
    }
    return count;
}

void ParticleEmitter::_initEmitter()
{
}

// Everything but the factory and the callback, in the order of the stream.
template <class Stream>
void ParticleEmitter::transfer(Stream &stream)
{
    stream(materialName);
    stream(position);
    stream(direction);
    stream(up);
    for (float ParticleEmitter::*const field :
         {&ParticleEmitter::emissionRemainder, &ParticleEmitter::emissionRate,
          &ParticleEmitter::emissionAngle, &ParticleEmitter::emissionAngleMin, &ParticleEmitter::angle,
          &ParticleEmitter::angleMax, &ParticleEmitter::velocityMin, &ParticleEmitter::velocityMax,
          &ParticleEmitter::timeToLiveMin, &ParticleEmitter::timeToLiveMax, &ParticleEmitter::reserved,
          &ParticleEmitter::durationMin, &ParticleEmitter::durationMax, &ParticleEmitter::durationRemain,
          &ParticleEmitter::repeatDelayMin, &ParticleEmitter::repeatDelayMax,
          &ParticleEmitter::repeatDelayRemain}) {
        stream(this->*field);
    }
    stream(enabled);
    stream(materialModified);
    stream(sizeMin);
    stream(sizeMax);
    stream(brightness);
    stream(animSpeed);
    stream(centered);
    stream(perspective);
    stream(emitAndDisable);
    stream(startDelayMin);
    stream(startDelayMax);
    stream(startDelay);
    stream(flags);
    stream(animFrames);
    stream(streakLength);
    stream(streakSize);
}

void ParticleEmitter::_deserialize(cFile &file)
{
    Reader reader{file};
    transfer(reader);
    callback = nullptr;
}

void ParticleEmitter::_serialize(cFile &file)
{
    Writer writer{file};
    transfer(writer);
}

char const *ParticleEmitter::getType() const
{
    return factory->getType();
}

void ParticleEmitter::_initParticle(Particle *particle, D3DXVECTOR3 const &)
{
    particle->flags = flags;
    particle->colour = 0xFFFFFFFF;
    particle->setBrightness(brightness);
    if (callback != nullptr) {
        callback->updatePosition(position);
    }
    particle->size = draw(sizeMin, sizeMax);
    if (unsigned char const frames = getAnimFrames(); frames > 1) {
        particle->flags |= Particle::ANIMATED;
        particle->currentFrame = static_cast<std::uint8_t>(cRand::random(0, frames - 1));
    }
}

void ParticleEmitter::setEmitterData(PoolBlk const *)
{
}

// The time by which the ended phase ran over, what its counter holds now, comes off the one that begins.
float ParticleEmitter::phaseLength(float min, float max, float endedRemain)
{
    return draw(min, max) - std::fabs(endedRemain);
}

void ParticleEmitter::setEnabled(bool on)
{
    enabled = on;
    if (on) {
        emissionRemainder = 0;
        durationRemain = phaseLength(durationMin, durationMax, repeatDelayRemain);
    } else {
        repeatDelayRemain = phaseLength(repeatDelayMin, repeatDelayMax, durationRemain);
    }
}

void ParticleEmitter::setDirection(D3DXVECTOR3 const &newDirection)
{
    constexpr float tiny = 1e-12f;
    D3DXVec3Normalize(&direction, &newDirection);
    up = cross(direction, {1, 0, 0});
    if (D3DXVec3LengthSq(&up) < tiny) {
        up = cross(direction, {0, 1, 0});
    }
    D3DXVec3Normalize(&up, &up);
}

void ParticleEmitter::setEmissionAngle(float degrees)
{
    emissionAngle = degrees * radiansPerDegree;
}

float ParticleEmitter::getEmissionAngle() const
{
    return emissionAngle * degreesPerRadian;
}

void ParticleEmitter::setEmissionAngleMin(float degrees)
{
    emissionAngleMin = degrees * radiansPerDegree;
}

float ParticleEmitter::getEmissionAngleMin() const
{
    return emissionAngleMin * degreesPerRadian;
}

void ParticleEmitter::setAngle(float degrees)
{
    angle = degrees * radiansPerDegree;
    if (angle > angleMax) {
        setAngleMax(degrees);
    }
}

float ParticleEmitter::getAngle() const
{
    return angle * degreesPerRadian;
}

void ParticleEmitter::setAngleMax(float degrees)
{
    angleMax = degrees * radiansPerDegree;
}

float ParticleEmitter::getAngleMax() const
{
    return angleMax * degreesPerRadian;
}

void ParticleEmitter::setSize(float size)
{
    sizeMin = size;
    if (size > sizeMax) {
        setSizeMax(size);
    }
}

void ParticleEmitter::setParticleVelocity(float min, float max)
{
    velocityMin = min;
    velocityMax = max;
}

void ParticleEmitter::setTimeToLive(float min, float max)
{
    timeToLiveMin = min;
    timeToLiveMax = max;
}

void ParticleEmitter::setDuration(float min, float max)
{
    durationMin = min;
    durationMax = max;
}

void ParticleEmitter::setMinDuration(float seconds)
{
    durationMin = seconds;
    setEnabled(enabled);
}

void ParticleEmitter::setMaxDuration(float seconds)
{
    durationMax = seconds;
    setEnabled(enabled);
}

void ParticleEmitter::setRepeatDelay(float min, float max)
{
    repeatDelayMin = min;
    repeatDelayMax = max;
}

bool ParticleEmitter::isIntense() const
{
    return (flags & Particle::INTENSE) != 0;
}

void ParticleEmitter::setIntense(bool on)
{
    flags = static_cast<std::uint8_t>(on ? flags | Particle::INTENSE : flags & ~Particle::INTENSE);
}

void ParticleEmitter::copyParametersToBinary(ParticleEmitter *other) const
{
    other->ParticleEmitter::operator=(*this);
    other->materialModified = true;
}

void ParticleEmitter::setMaterialName(String const &name)
{
    materialName = name;
    materialModified = true;
}

bool ParticleEmitter::isMaterialModified()
{
    bool const wasModified = materialModified;
    materialModified = false;
    return wasModified;
}

ParticleEmitterFactory::~ParticleEmitterFactory() = default;

void ParticleEmitterFactory::destroyEmitter(ParticleEmitter *emitter)
{
    std::default_delete<ParticleEmitter>()(emitter);
}

} // namespace Qel
