#include "Tests/Tools/logLines.h"
#include "Tests/Tools/testParticles.h"
#include "Tests/virtualSlot.h"

#include "System/math/rand.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <memory>
#include <vector>

namespace Qel {
namespace {

class SystemTest : public ::testing::Test {
protected:
    test::Particles particles;
    ParticleSystem system{"s", "t"};

    /// Particles at x = 0, 1, 2 ... with these lifetimes.
    void fill(std::vector<float> const &lifetimes)
    {
        for (float const lifetime : lifetimes) {
            Particle *const particle = system.addParticle();
            ASSERT_NE(particle, nullptr);
            *particle = Particle();
            particle->position.x = static_cast<float>(system.getActiveCount() - 1);
            particle->timeToLive = particle->totalTimeToLive = lifetime;
        }
    }
    std::vector<float> places() const
    {
        std::vector<float> all;
        for (unsigned i = 0; i < system.getActiveCount(); ++i) {
            all.push_back(system.getParticles()[i].position.x);
        }
        return all;
    }
    ParticleEmitter &dot(float rate, float lifetime = 5, float velocity = 0)
    {
        ParticleEmitter &emitter = *system.addEmitter("Dot");
        emitter.setEmissionRate(rate);
        emitter.setTimeToLive(lifetime);
        emitter.setParticleVelocity(velocity);
        return emitter;
    }
    test::NoteAffector &note() { return static_cast<test::NoteAffector &>(*system.addAffector("Note")); }
};

TEST_F(SystemTest, StepsInItsOrder)
{
    test::LogLines const log(1);
    system.setParticleQuota(3);
    dot(25);
    dot(0);
    ParticleAffector &first = note();
    first.setOnEmitter(1);
    note();
    log.take();
    system.update(1.0f); // clamped to 0.08: two particles
    EXPECT_EQ(test::particleTrace(), "count count born note0 born note0 affect2 affect2 ");
    EXPECT_FLOAT_EQ(system.getTimeAlive(), 0.08f);
    EXPECT_FALSE(system.isAlive()) << "none at the start";
    EXPECT_EQ(log.take(), "");
    system.update(0.08f);
    EXPECT_EQ(system.getActiveCount(), 3u);
    system.update(-1);
    EXPECT_TRUE(system.isAliveEmitting());
    EXPECT_EQ(log.take(), "ParticleSystem::update() psys='s' template='t' quota=3 free=0\n"
                          " No free particles; increase the particle quota!\n");
}

// 1 and 4 expire. A new particle takes the place of 1; the others move down over that of 4.
TEST_F(SystemTest, ReusesExpiredPlacesInOrderAndClosesTheRest)
{
    system.setParticleQuota(10);
    fill({1, 0.01f, 1, 1, 0.05f, 1, 0.08f, 1});
    test::NoteAffector &affector = note();
    affector.onAffect = [](ParticleSystem &s) {
        EXPECT_EQ(s.getParticles()[1].size, 0);
        EXPECT_EQ(s.addParticle(), s.getParticles() + 1) << "not cleared";
        s.getParticles()[1].position.x = 100;
        s.getParticles()[1].timeToLive = 1;
    };
    system.update(0.08f);
    EXPECT_EQ(places(), (std::vector<float>{0, 100, 2, 3, 5, 6, 7})) << "0.08 - 0.08 is not below 0";
    affector.setOnEmitter(9);
    affector.onAffect = nullptr;
    system.update(0.001f);
    EXPECT_EQ(places(), (std::vector<float>{0, 100, 2, 3, 5, 7}));
    for (int i = 0; i < 20; ++i) {
        system.update(0.08f);
    }
    EXPECT_EQ(system.getParticles(), nullptr) << "an idle system has no pool";
}

TEST_F(SystemTest, GivesNothingBeyondTheQuota)
{
    test::LogLines const log(3);
    EXPECT_EQ(system.addParticle(), nullptr);
    EXPECT_EQ(log.take(), "ParticleSystem::addParticle() psys=s template=t quota=0\n");
    EXPECT_TRUE(system.setParameter("quota", "-1"));
    EXPECT_EQ(system.getParticleQuota(), 4294967295u);
    EXPECT_EQ(system.addParticle(), nullptr) << "no pool of 4 billion";

    // Each wants 100 of 100: half is given to each, and what does not fit after that is lost.
    system.setParticleQuota(100);
    dot(1250);
    dot(1250);
    system.update(0.08f);
    EXPECT_EQ(system.getActiveCount(), 100u);
    EXPECT_EQ(std::count_if(system.getParticles(), system.getParticles() + 100,
                            [](Particle const &p) { return p.emitterId == 1; }),
              50);
    system.update(0.08f);
    EXPECT_EQ(system.getActiveCount(), 100u);
    EXPECT_NE(log.take().find("psys=s template=t quota=100\n"), std::string::npos);
}

TEST_F(SystemTest, LosesAllParticlesWithANewQuota)
{
    system.setParticleQuota(4);
    fill({1, 1, 1, 1});
    system.setParticleQuota(2);
    EXPECT_EQ(system.getActiveCount(), 2u);
    EXPECT_EQ(system.getParticles()[1].timeToLive, -0.01f);
    system.update(0);
    EXPECT_EQ(system.getActiveCount(), 0u);

    // From within, it waits for the end of the update.
    dot(100);
    note().onAffect = [](ParticleSystem &s) {
        Particle const before = s.getParticles()[0];
        s.setParticleQuota(77);
        EXPECT_EQ(s.getParticles()[0].timeToLive, before.timeToLive);
    };
    system.update(0.08f);
    EXPECT_EQ(system.getParticleQuota(), 77u);
    EXPECT_EQ(system.getActiveCount(), 2u);
}

// What was born stays behind while the system moves, the more the older it is: age 1/4 to the power of 2.
TEST_F(SystemTest, LeavesParticlesBehindWhenUnbound)
{
    system.setParticleQuota(8);
    system.moveParticleSystem({5, 0, 0}); // bound: nothing
    fill({4, 0});
    system.getParticles()[0].timeToLive = 3;
    system.setBound(false);
    system.setBoundExpo(2);
    system.moveParticleSystem({16, 0, 0});
    system.moveParticleSystem({16, 0, 0});
    system.update(0);
    EXPECT_EQ(places(), (std::vector<float>{-2, 1 - 32}));
    system.update(0);
    EXPECT_EQ(places()[0], -2) << "no further motion";
    for (float const exponent : {0.0f, 1.0f}) {
        system.getParticles()[0].position.x = 0;
        system.setBoundExpo(exponent);
        system.moveParticleSystem({16, 0, 0});
        system.update(0);
        EXPECT_EQ(places()[0], exponent == 0 ? -16 : -4);
    }
    // The born ones are spread along the way.
    system.setParticleQuota(0);
    system.setParticleQuota(4);
    dot(50);
    system.moveParticleSystem({8, 0, 0});
    system.update(0.08f);
    EXPECT_EQ(places(), (std::vector<float>{0, 2, 4, 6}));
}

// The pass that has nothing between expiry and movement and the one that has must agree to the bit, and both
// with a plain reading.
TEST_F(SystemTest, MovesAnimatesAndBoundsTheSameOnBothWays)
{
    ParticleSystem other;
    for (ParticleSystem *const s : {&system, &other}) {
        s->setParticleQuota(64);
        ParticleEmitter &emitter = *s->addEmitter("Dot");
        emitter.setAnimFrames(5);
        emitter.setAnimSpeed(7);
        emitter.setEmissionRate(0);
        cRand::seed(3);
        for (unsigned i = 0; i < 63; ++i) {
            Particle &p = *s->addParticle();
            p = Particle();
            p.position = {cRand::random(-9.0f, 9.0f), cRand::random(-9.0f, 9.0f), cRand::random(-9.0f, 9.0f)};
            p.direction = {cRand::random(-9.0f, 9.0f), cRand::random(-9.0f, 9.0f), -0.0f};
            p.size = cRand::random(0.5f, 2.0f);
            p.timeToLive = cRand::random(0.0f, 2.0f);
            p.totalTimeToLive = 2;
            p.flags = static_cast<std::uint8_t>(i % 3 == 0 ? Particle::ANIMATED : 0);
            p.emitterId = static_cast<std::uint8_t>(i % 6 == 0 ? 0 : 9); // 9 is an orphan
        }
    }
    system.setEmitting(false);
    other.addAffector("Note");
    std::vector<Particle> plain(system.getParticles(), system.getParticles() + 63);
    float const dt = 0.07f;
    while (system.getActiveCount() != 0) {
        D3DXVECTOR3 least(1e9f, 1e9f, 1e9f), most = -least;
        float margin = 0;
        for (Particle &p : plain) {
            p.timeToLive -= dt;
            p.size = p.timeToLive < 0 ? 0 : p.size;
            p.position += p.direction * dt;
            if ((p.flags & Particle::ANIMATED) != 0 && p.emitterId == 0) {
                p.currentFrame = static_cast<std::uint8_t>(std::fmod(7 * (2 - p.timeToLive), 5.0f));
            }
            for (int axis = 0; axis < 3; ++axis) {
                least[axis] = std::min(least[axis], p.position[axis]);
                most[axis] = std::max(most[axis], p.position[axis]);
            }
            margin = std::max(margin, p.size);
        }
        std::erase_if(plain, [](Particle const &p) { return p.isExpired(); });
        for (ParticleSystem *const s : {&system, &other}) {
            s->update(dt);
            ASSERT_EQ(s->getActiveCount(), plain.size());
            for (unsigned i = 0; i < plain.size(); ++i) {
                Particle const &p = s->getParticles()[i];
                EXPECT_TRUE(p.position == plain[i].position && p.timeToLive == plain[i].timeToLive &&
                            p.size == plain[i].size && p.currentFrame == plain[i].currentFrame);
            }
            D3DXVECTOR3 const room(margin, margin, margin);
            EXPECT_EQ(s->getBoundingBox().getMinimum(), least - room);
            EXPECT_EQ(s->getBoundingBox().getMaximum(), most + room);
        }
    }
    system.update(dt);
    EXPECT_EQ(system.getBoundingBox().getMaximum(), D3DXVECTOR3(0, 0, 0));
}

TEST_F(SystemTest, StandsAnyNumber)
{
    system.setParticleQuota(64);
    system.setBound(false);
    ParticleEmitter &emitter = dot(NAN);
    for (float const value : {NAN, HUGE_VALF, -HUGE_VALF, FLT_MAX, -1.0f, 0.0f}) {
        fill({value, 1});
        for (unsigned i = 0; i < system.getActiveCount(); ++i) {
            Particle &p = system.getParticles()[i];
            p.flags = Particle::ANIMATED;
            p.emitterId = static_cast<std::uint8_t>(i % 2 * 200);
            p.position.y = p.direction.x = value;
        }
        emitter.setAnimSpeed(value);
        emitter.setAnimFrames(value > 0 ? 255 : 0);
        system.setBoundExpo(value);
        system.moveParticleSystem({value, 1, 1});
        system.update(value);
        system.fastForward(1, value);
        system.fastForward(value > 1 ? 0 : value, 0.1f);
    }
    EXPECT_LE(system.getActiveCount(), 64u);
}

TEST_F(SystemTest, RenumbersAffectorsWhenAnEmitterGoes)
{
    system.setParticleQuota(8);
    dot(0).setIntense(true);
    dot(0).setMaterialName("one");
    dot(0).setIntense(true);
    system.recheck();
    EXPECT_TRUE(system.hasNonIntense());
    for (int const on : {0, 1, 2, 255}) {
        note().setOnEmitter(static_cast<unsigned char>(on));
    }
    fill({1});
    system.getParticles()[0].emitterId = 2;
    system.getParticles()[0].flags = Particle::ANIMATED;
    ParticleAffector *const orphan = system.getAffector(1);
    ParticleEmitter *const second = system.getEmitter(1);
    EXPECT_EQ(system.getMaterialName(1), "one");
    EXPECT_EQ(system.getMaterialName(200), "");
    EXPECT_TRUE(system.isSystemModified());
    EXPECT_TRUE(system.removeEmitter(1u));
    EXPECT_FALSE(system.removeEmitter(2u));
    EXPECT_TRUE(system.isSystemModified());
    EXPECT_FALSE(system.isSystemModified());
    EXPECT_FALSE(system.hasNonIntense());
    ASSERT_EQ(system.getNumAffectors(), 3);
    EXPECT_EQ(system.getAffector(0)->getOnEmitter(), 0);
    EXPECT_EQ(system.getAffector(1)->getOnEmitter(), 1);
    EXPECT_EQ(system.getAffector(2)->getOnEmitter(), 255);
    system.update(0.01f); // the orphan's lookup stays inside
    EXPECT_EQ(particles.dots.alive, 3) << "by number it is the caller's";
    particles.manager._destroyEmitter(second);
    particles.manager._destroyAffector(orphan);
    ParticleAffector *const ofFirst = system.getAffector(0);
    EXPECT_TRUE(system.removeEmitter("Dot"));
    EXPECT_EQ(particles.dots.alive, 1);
    EXPECT_FALSE(system.removeEmitter("None"));
    particles.manager._destroyAffector(ofFirst);
    ASSERT_EQ(system.getNumAffectors(), 2);
    EXPECT_TRUE(system.removeAffector("Note"));
    EXPECT_FALSE(system.removeAffector(1u));
    EXPECT_EQ(particles.notes.alive, 1);
}

TEST_F(SystemTest, HasRoomFor255Emitters)
{
    for (int i = 0; i < 255; ++i) {
        ASSERT_NE(system.addEmitter("Dot"), nullptr);
    }
    EXPECT_EQ(system.addEmitter("Dot"), nullptr);
    EXPECT_EQ(particles.dots.alive, 255);
    system.removeAllEmitters();
    EXPECT_EQ(particles.dots.alive, 0);
}

TEST_F(SystemTest, CopiesWhatATemplateHas)
{
    system.setParticleQuota(7);
    system.setBound(false);
    system.setEditorScriptModified();
    ParticleEmitter &emitter = dot(33);
    emitter.setIntense(true);
    emitter.setStreakLength(1);
    emitter.setMinStartDelay(1);
    emitter.setMaxStartDelay(3);
    dot(1);
    note().setOnEmitter(1);
    system.update(0.02f);
    system.recheck();
    cRand::seed(8);
    cMersenneTwister twin;
    twin.seed(8);
    ParticleSystem const copy(system);
    EXPECT_EQ(copy.getName(), "s");
    EXPECT_EQ(copy.getActiveCount(), 0u);
    EXPECT_EQ(copy.getTimeAlive(), 0);
    EXPECT_EQ(copy.getParticleQuota(), 7u);
    EXPECT_FALSE(copy.isBound());
    EXPECT_TRUE(copy.isEditorScriptModified() && copy.isEmitting() && copy.isAffecting());
    EXPECT_FALSE(copy.hasStreaks()) << "until it is checked again";
    EXPECT_TRUE(copy.hasNonIntense());
    EXPECT_EQ(copy.getEmitter(0)->getEmissionRate(), 33);
    EXPECT_EQ(copy.getAffector(0)->getOnEmitter(), 1);
    EXPECT_EQ(copy.getEmitter(0)->getStartDelay(), 1 + twin.Random01() * 2);
    twin.Random01(); // each emitter draws, also one without a delay
    EXPECT_EQ(cRand::random(), twin.Random());

    // A delayed emitter is not asked.
    ParticleSystem late;
    late = copy;
    test::particleTrace().clear();
    late.update(0.08f);
    EXPECT_EQ(test::particleTrace().substr(0, 12), "count affect");
    system.reset();
    EXPECT_EQ(system.getParticleQuota(), 0u);
    EXPECT_EQ(system.getNumEmitters(), 2);
    EXPECT_EQ(system.getParticles(), nullptr);
}

TEST(ParticleSystemSlots, StandInTheirPlaces)
{
    using S = ParticleSystem;
    EXPECT_EQ(virtualSlot(&S::getName), virtualSlot(&S::setParameter) + 2);
    EXPECT_EQ(virtualSlot(&S::_serialize), virtualSlot(&S::setParameter) + 3);
}

} // namespace
} // namespace Qel
