#include "System/File/file.h"
#include "System/Graphics/particle/particle.h"
#include "System/Graphics/particle/particleEmitter.h"
#include "System/Graphics/particle/particleSystem.h"
#include "System/Graphics/particle/particleSystemMgr.h"
#include "System/System/paramCommand.h"
#include "System/System/stringConverter.h"

#include <cmath>
#include <cstdio>
#include <memory>

namespace {

// A nozzle that turns: particles leave at an angle that grows with each one.
class Sprinkler final : public Qel::ParticleEmitter {
public:
    explicit Sprinkler(Qel::ParticleEmitterFactory *maker) : ParticleEmitter(maker)
    {
        // The first one of the type fills the dictionary of all.
        if (createParamDictionary("EmitterSprinkler")) {
            addBaseParameters();
            getParamDictionary()->addParameter(
                {"turn", "The angle from one particle to the next, in degrees.", Qel::PARAM_FLOAT},
                &turnCommand);
        }
    }

    void _initEmitter() override {}

    unsigned short genEmissionCount(float dt) override { return genConstantEmissionCount(dt); }

    void _initParticle(Qel::Particle *particle, D3DXVECTOR3 const &offset) override
    {
        ParticleEmitter::_initParticle(particle, offset); // flags, colour, brightness, size, frame
        m_angle += m_turn * 0.017453292f;
        particle->position = getPosition() + offset;
        particle->direction = {std::cos(m_angle), 1, std::sin(m_angle)};
        genEmissionVelocity(particle->direction);
        particle->timeToLive = particle->totalTimeToLive = genEmissionTTL();
        particle->setRotation(genRotationAngle());
        particle->rotationSpeed = 0; // the place may have been another's
        particle->currentFrame = 0;
    }

    // The stream is that of the base and then one's own.
    void _serialize(Qel::cFile &file) override
    {
        ParticleEmitter::_serialize(file);
        file.write_float(m_turn);
    }
    void _deserialize(Qel::cFile &file) override
    {
        ParticleEmitter::_deserialize(file);
        file.read_float(m_turn);
    }

    // So is the copy, by which a system gets its emitters from a template.
    void copyParametersToBinary(Qel::ParticleEmitter *other) const override
    {
        static_cast<Sprinkler *>(other)->m_turn = m_turn;
        ParticleEmitter::copyParametersToBinary(other);
    }

private:
    class TurnCommand final : public Qel::ParamCommand {
        static Sprinkler *of(void *target)
        {
            return static_cast<Sprinkler *>(static_cast<Qel::StringInterface *>(target));
        }
        Qel::String doGet(void const *target) override
        {
            return Qel::StringConverter::toString(of(const_cast<void *>(target))->m_turn);
        }
        void doSet(void *target, Qel::String const &value) override
        {
            of(target)->m_turn = Qel::StringConverter::parseReal(value);
        }
    };
    static inline TurnCommand turnCommand;

    float m_turn = 20;
    float m_angle = 0;
};

class SprinklerFactory final : public Qel::ParticleEmitterFactory {
public:
    char const *getType() const override { return "Sprinkler"; }
    Qel::ParticleEmitter *createEmitter() override { return std::make_unique<Sprinkler>(this).release(); }
    Qel::ParticleEmitter *createEmitter(Qel::cFile &file) override
    {
        auto emitter = std::make_unique<Sprinkler>(this);
        emitter->_deserialize(file);
        return emitter.release();
    }
};

} // namespace

// In a plugin the two halves stand in dllStartPlugin and dllStopPlugin.
int main()
{
    Qel::ParticleSystemMgr manager; // Root has one already
    SprinklerFactory factory;
    manager.addEmitterFactory(&factory);

    Qel::ParticleSystem *const lawn = manager.createSystem("lawn", 500);
    lawn->addEmitter("Sprinkler")->setParameter("turn", "7.5");
    for (int frame = 0; frame < 60; ++frame) {
        manager.update(1 / 60.0f); // once a frame, or the manager as a frame listener
    }
    std::printf("%u drops\n", lawn->getActiveCount());
    bool const isRight = lawn->getActiveCount() == 9 || lawn->getActiveCount() == 10;

    manager.destroySystem(lawn);
    manager.removeEmitterFactory(&factory); // with all that is still of it
    return isRight ? 0 : 1;
}
