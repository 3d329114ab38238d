#include "Tests/Tools/testParticles.h"
#include "Tests/virtualSlot.h"

#include "System/math/rand.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace Qel {
namespace {

using test::DotEmitter;

class EmitterTest : public ::testing::Test {
protected:
    test::Particles particles;
    DotEmitter emitter{&particles.dots};

    std::vector<unsigned> counts(float dt, int times)
    {
        std::vector<unsigned> all;
        for (int i = 0; i < times; ++i) {
            all.push_back(emitter.genConstantEmissionCount(dt));
        }
        return all;
    }
};

TEST_F(EmitterTest, CarriesFractionsAndClampsWhatIsNoCount)
{
    EXPECT_EQ(counts(0.25f, 4), (std::vector<unsigned>{2, 3, 2, 3}));
    emitter.setEmissionRate(0.4f);
    emitter.setEnabled(true);
    EXPECT_EQ(counts(1, 3), (std::vector<unsigned>{0, 0, 1}));
    constexpr float infinite = std::numeric_limits<float>::infinity();
    for (auto const &[rate, count] :
         std::vector<std::pair<float, unsigned>>{{1e9f, 65535}, {-1e9f, 0}, {NAN, 0}, {infinite, 65535}}) {
        emitter.setEnabled(true);
        emitter.setEmissionRate(rate);
        EXPECT_EQ(counts(1, 2), (std::vector<unsigned>{count, count})) << rate;
        emitter.setEmissionRate(4);
        EXPECT_EQ(counts(1, 1)[0], 4u) << "nothing of it stays, " << rate;
    }
    emitter.setEmissionRate(100.7f);
    emitter.setEmitAndDisable(true);
    EXPECT_EQ(counts(0.01f, 2), (std::vector<unsigned>{100, 0})) << "one burst";
    EXPECT_FALSE(emitter.getEnabled());
}

// Four steps of 0.3 run over a second by 0.2; the pause is then 0.8, and ends after three, over by 0.1.
TEST_F(EmitterTest, TakesWhatAPhaseRanOverOffTheNext)
{
    emitter.setParameter("duration_min", "1");
    emitter.setParameter("duration_max", "1");
    emitter.setParameter("repeat_delay", "1");
    emitter.setEmissionRate(10);
    std::string on;
    for (int i = 0; i < 9; ++i) {
        emitter.genConstantEmissionCount(0.3f);
        on += emitter.getEnabled() ? '1' : '0';
    }
    EXPECT_EQ(on, "111000111");
    emitter.setRepeatDelay(0);
    emitter.setEnabled(false);
    EXPECT_EQ(counts(10, 3), (std::vector<unsigned>{0, 0, 0})) << "without a delay for ever";
}

// A callback may move the emitter for each particle, before anything is drawn.
TEST_F(EmitterTest, DrawsInOrderAndNotWhereBothEndsAreEqual)
{
    struct Mover final : ParticleEmitterCallback {
        unsigned drawn = 0;
        void updatePosition(D3DXVECTOR3 &position) override
        {
            position.x += 1;
            drawn = cRand::random();
        }
    } mover;
    emitter.setParticleEmitterCallback(&mover);
    emitter.setTimeToLive(2, 4);
    emitter.setAngle(10);
    emitter.setAngleMax(30);
    emitter.setParticleVelocity(1, 3);
    emitter.setEmissionAngle(90);
    emitter.setEmissionAngleMin(30);
    emitter.setDirection({0, 0, 2});
    emitter.setSize(1);
    emitter.setSizeMax(2);
    emitter.setAnimFrames(4);
    emitter.setBrightness(0.5f);
    cRand::seed(99);
    cMersenneTwister twin;
    twin.seed(99);
    Particle particle;
    emitter._initParticle(&particle, {0, 0, 0});

    EXPECT_EQ(mover.drawn, twin.Random());
    EXPECT_EQ(particle.position, D3DXVECTOR3(1, 0, 0));
    EXPECT_EQ(particle.size, 1 + twin.Random01());
    EXPECT_EQ(particle.currentFrame, twin.random(0, 3));
    EXPECT_EQ(particle.flags, Particle::ANIMATED);
    EXPECT_EQ(particle.brightness, 127);
    double const tilt = (30 + twin.Random01() * 60.0) * M_PI / 180;
    double const spin = twin.Random01() * 2 * M_PI;
    float const speed = 1 + twin.Random01() * 2.0f;
    // The direction is z, so it is tilted around z cross x = y, towards x, and then spun around z.
    EXPECT_NEAR(particle.direction.x, std::sin(tilt) * std::cos(spin) * speed, 1e-5);
    EXPECT_NEAR(particle.direction.y, std::sin(tilt) * std::sin(spin) * speed, 1e-5);
    EXPECT_NEAR(particle.direction.z, std::cos(tilt) * speed, 1e-5);
    EXPECT_EQ(particle.timeToLive, 2 + twin.Random01() * 2.0f);
    EXPECT_EQ(particle.totalTimeToLive, particle.timeToLive);
    EXPECT_NEAR(particle.rotation, (10 + twin.Random01() * 20.0) * M_PI / 180, 1e-6);
    EXPECT_EQ(cRand::random(), twin.Random());

    DotEmitter plain(&particles.dots);
    plain._initParticle(&particle, {1, 2, 3});
    EXPECT_EQ(cRand::random(), twin.Random()) << "nothing to draw";
    EXPECT_EQ(particle.flags, 0);
    EXPECT_EQ(particle.position, D3DXVECTOR3(1, 2, 3));
    EXPECT_EQ(particle.direction, D3DXVECTOR3(1, 0, 0));
}

TEST_F(EmitterTest, KeepsPairsAndDirectionsAsItsSettersSay)
{
    emitter.setAngle(30);
    EXPECT_FLOAT_EQ(emitter.getAngleMax(), 30);
    emitter.setAngleMax(10);
    EXPECT_FLOAT_EQ(emitter.getAngle(), 30);
    emitter.setSize(5);
    EXPECT_EQ(emitter.getSizeMax(), 5);
    emitter.setDirection({3, 0, 0});
    EXPECT_EQ(emitter.getDirection(), D3DXVECTOR3(1, 0, 0));
    EXPECT_EQ(emitter.upward(), D3DXVECTOR3(0, 0, 1));
    emitter.setDirection({0, 0, 4});
    EXPECT_EQ(emitter.upward(), D3DXVECTOR3(0, 1, 0));
    emitter.setStreakLength(1);
    EXPECT_FALSE(emitter.hasStreaks());
    emitter.setIntense(true);
    EXPECT_TRUE(emitter.hasStreaks());
    EXPECT_TRUE(emitter.setParameter("material", "smoke"));
    EXPECT_TRUE(emitter.isMaterialModified());
    EXPECT_FALSE(emitter.isMaterialModified());
    EXPECT_TRUE(emitter.setParameter("animFrames", "300"));
    EXPECT_EQ(emitter.getAnimFrames(), 44);

    DotEmitter copy(nullptr);
    emitter.copyParametersToBinary(&copy);
    EXPECT_STREQ(copy.getType(), "Dot");
    EXPECT_EQ(copy.getParameter("material"), "smoke");
    EXPECT_TRUE(copy.isMaterialModified());

    test::NoteAffector affector(&particles.notes);
    EXPECT_EQ(affector.getParameter("onemitter"), "255");
    EXPECT_FALSE(affector.isOnEmitter(3));
    EXPECT_TRUE(affector.setParameter("onemitter", "300"));
    EXPECT_EQ(affector.getOnEmitter(), 44);
}

TEST(Particle, PacksRotationAndBrightness)
{
    Particle particle;
    for (auto const &[radians, index] : std::vector<std::pair<float, unsigned>>{
             {0, 0}, {1, 651}, {6.2831855f, 4095}, {-1, 4096 - 651}, {NAN, 0}, {1e30f, 0}}) {
        particle.setRotation(radians);
        EXPECT_EQ(particle.rotationIndex, index) << radians;
    }
    for (auto const &[value, byte] :
         std::vector<std::pair<float, unsigned>>{{0.5f, 127}, {1, 255}, {7, 255}, {-1, 0}, {NAN, 0}}) {
        particle.setBrightness(value);
        EXPECT_EQ(particle.brightness, byte) << value;
    }
    particle.brightness = 255;
    EXPECT_NEAR(particle.getBrightness(), 1, 1e-6);
    EXPECT_EQ(sizeof(Particle), 56u);
}

TEST(ParticleSlots, StandInTheirPlaces)
{
    using E = ParticleEmitter;
    EXPECT_EQ(virtualSlot(&E::_initEmitter), virtualSlot(&E::setParameter) + 7);
    EXPECT_TRUE(standInOrder(virtualSlot(&E::_initEmitter), &E::_initEmitter, &E::_deserialize,
                             &E::_serialize, static_cast<char const *(E::*)() const>(&E::getType),
                             &E::getFactory, &E::_initParticle, &E::setParticleEmitterCallback,
                             &E::setEmitterData, &E::setEnabled, &E::getEnabled, &E::genEmissionCount,
                             &E::setPosition));
    EXPECT_EQ(virtualSlot(&E::copyParametersToBinary), virtualSlot(&E::setParameter) + 86);
    using A = ParticleAffector;
    EXPECT_TRUE(standInOrder(virtualSlot(&A::setParameter) + 2, &A::_initAffector, &A::_deserialize,
                             &A::_serialize, &A::_affect, &A::_initParticle, &A::setOnEmitter,
                             &A::getOnEmitter, &A::isOnEmitter, &A::copyParametersToBinary, &A::getType,
                             &A::getFactory));
}

} // namespace
} // namespace Qel
