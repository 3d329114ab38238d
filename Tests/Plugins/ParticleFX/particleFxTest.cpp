#include "Tests/Plugins/archivePlugin.h"

#include "System/File/fileMem.h"
#include "System/Graphics/particle/particle.h"
#include "System/Graphics/particle/particleAffector.h"
#include "System/Graphics/particle/particleEmitter.h"
#include "System/Graphics/particle/particleSystemMgr.h"
#include "System/math/rand.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>

namespace Qel {
namespace {

class ParticleFxTest : public ::testing::Test {
protected:
    test::TempFolder folder;
    test::LogLines log;
    PluginMgr plugins;
    ParticleSystemMgr manager;
    std::optional<StartedPlugin> plugin{"plugin_particlefx.dll"};

    /// Parameters are lines of a name and a value.
    template <class Part>
    static void expectParameters(Part &part, StringVector const &parameters)
    {
        for (String const &line : parameters) {
            StringVector words;
            line.split(words, " ", 1);
            EXPECT_EQ(part.getParameter(words[0]), words[1]) << line;
        }
    }
    template <class Part>
    static void setParameters(Part &part, StringVector const &parameters)
    {
        for (String const &line : parameters) {
            StringVector words;
            line.split(words, " ", 1);
            EXPECT_TRUE(part.setParameter(words[0], words[1])) << line;
        }
        expectParameters(part, parameters);
    }
};

// The direction is z in all rows: rings lie in x and y.
TEST_F(ParticleFxTest, EmitsInsideItsShapes)
{
    struct {
        char const *type;
        StringVector parameters;
        D3DXVECTOR3 half; // of the box around it
        bool isFlat;      // the radius is one in x and y
        float least, most;
        double meanSquare; // of the distance from the middle
    } const rows[] = {
        {"Point", {}, {0, 0, 0}, false, 0, 0, 0},
        {"Box", {"edges 2 4 6"}, {1, 2, 3}, false, 0, 9, (4 + 16 + 36) / 12.0},
        {"Sphere", {"radius 3", "radius_inner 0"}, {9, 9, 9}, false, 0, 3, 9 * 3 / 5.0},
        {"Sphere", {"radius 3", "radius_inner 2"}, {9, 9, 9}, false, 2, 3, 3 * (243 - 32) / (5 * 19.0)},
        {"Ring", {"radius 3", "radius_inner 1"}, {9, 9, 1e-5f}, true, 1, 3, (9 + 1) / 2.0},
        {"Cylinder", {"radius 2", "radius_inner 0", "height 6"}, {9, 9, 3}, true, 0, 2, 2 + 36 / 12.0},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.type);
        cRand::seed(1);
        ParticleSystem system;
        system.setParticleQuota(2000);
        ParticleEmitter &emitter = *system.addEmitter(row.type);
        emitter.setEmitAndDisable(true);
        emitter.setEmissionRate(2000);
        setParameters(emitter, row.parameters);
        setParameters(emitter, {"direction 0 0 1", "position 10 20 30"});
        if (!row.parameters.empty()) {
            setParameters(emitter, {"outward true"});
        }
        system.update(0);
        ASSERT_EQ(system.getActiveCount(), 2000u);
        double sum = 0;
        for (unsigned i = 0; i < 2000; ++i) {
            Particle const &p = system.getParticles()[i];
            D3DXVECTOR3 const at = p.position - D3DXVECTOR3(10, 20, 30);
            double const square = double{at.x} * at.x + double{at.y} * at.y + double{at.z} * at.z;
            double const radius = row.isFlat ? std::hypot(at.x, at.y) : std::sqrt(square);
            ASSERT_TRUE(std::fabs(at.x) <= row.half.x && std::fabs(at.y) <= row.half.y &&
                        std::fabs(at.z) <= row.half.z && radius >= row.least - 0.001 &&
                        radius <= row.most + 0.001)
                << at.x << ' ' << at.y << ' ' << at.z;
            sum += square;
            ASSERT_NEAR(D3DXVec3Length(&p.direction), 1, 1e-4);
            ASSERT_TRUE(row.parameters.empty() || D3DXVec3Dot(&p.direction, &at) > 0);
        }
        EXPECT_NEAR(sum / 2000, row.meanSquare, 0.05 * row.meanSquare) << "filled evenly";
    }
}

TEST_F(ParticleFxTest, AffectsItsOwnLivingParticles)
{
    struct {
        char const *type;
        StringVector parameters;
        float x, y, size, rotation; // then, of a particle at x = 2 with direction x, half its life
        std::uint32_t colour = 0xFFFFFFFF;
    } const rows[] = {
        {"LinearForce", {"force 1 2 3"}, 1 + 0.05f, 2 * 0.05f, 1, 0},
        {"GravityPoint",
         {"position 2 4 0", "strength 8", "falloff 2", "distance_min 0"},
         1,
         0.5f * 0.05f,
         1,
         0},
        {"ColourFade", {"keys 0 ff000000 0.25 ff0000ff 0.75 00ff00ff"}, 1, 0, 1, 0, 0x808000FF},
        {"Scale", {"rate -2"}, 1, 0, 1 - 2 * 0.05f, 0},
        {"Rotate", {"speed_min 90", "speed_max 90"}, 1, 0, 1, 0.5f * 0.05f},
        {"Drag", {"drag 2"}, std::exp(-0.1f), 0, 1, 0},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.type);
        ParticleSystem system;
        system.setParticleQuota(3);
        ParticleAffector &affector = *system.addAffector(row.type);
        affector.setOnEmitter(1);
        setParameters(affector, row.parameters);
        for (unsigned i = 0; i < 3; ++i) {
            Particle &p = *system.addParticle();
            p.position = {2, 0, 0};
            p.direction = {1, 0, 0};
            p.timeToLive = i == 2 ? 0.01f : 0.55f;
            p.totalTimeToLive = 1;
            p.rotationSpeed = 0.5f;
            p.emitterId = static_cast<std::uint8_t>(i == 0 ? 0 : 1);
        }
        Particle const before = system.getParticles()[0];
        affector._affect(&system, 0);
        system.update(0.05f);
        ASSERT_EQ(system.getActiveCount(), 2u);
        Particle const &other = system.getParticles()[0];
        EXPECT_TRUE(other.direction == before.direction && other.colour == before.colour &&
                    other.size == before.size && other.rotation == before.rotation);
        Particle const &own = system.getParticles()[1];
        EXPECT_FLOAT_EQ(own.direction.x, row.x);
        EXPECT_FLOAT_EQ(own.direction.y, row.y);
        EXPECT_FLOAT_EQ(own.size, row.size);
        EXPECT_FLOAT_EQ(own.rotation, row.rotation);
        EXPECT_EQ(own.colour, row.colour);

        // What a stream and a copy keep, and what a cut one does not hurt.
        cFileMem file;
        affector._serialize(file);
        for (unsigned int length = 0; length <= file.size(); ++length) {
            cFileMem part(length, static_cast<unsigned char const *>(file.getData()));
            ParticleAffector *const read = manager._createAffector(row.type, part);
            if (length == file.size()) {
                expectParameters(*read, row.parameters);
            }
            manager._destroyAffector(read);
        }
        ParticleSystem const copy(system);
        expectParameters(*copy.getAffector(0), row.parameters);
        EXPECT_EQ(copy.getAffector(0)->getOnEmitter(), 1);
    }
}

TEST_F(ParticleFxTest, KeepsScriptsAndStreamsOfAllTypesAndComesOffCleanly)
{
    String script;
    for (String const &type : manager.getEmitterFactories()) {
        script += "emitter " + type + " { \"radius 2.5\" \"height 7\" \"edges 1 2 3\" \"outward true\" }\n";
    }
    for (String const &type : manager.getAffectorFactories()) {
        script += "affector " + type + " { \"onemitter 3\" \"rate 4\" \"drag 5\" \"keys 0.5 01020304\" }\n";
    }
    test::writeFile("all.particle", ("particlesystem All { " + script + "}").c_str());
    EXPECT_TRUE(manager.parseScript("all.particle"));
    ParticleSystem *const live = manager.createSystem("live", "All");
    EXPECT_EQ(live->getNumEmitters(), 5);
    EXPECT_EQ(live->getNumAffectors(), 6);
    manager.saveScript("first.particle");
    manager.SerializeTemplates("all.bin");
    EXPECT_TRUE(manager.DeserializeTemplates("all.bin"));
    manager.saveScript("second.particle");
    EXPECT_EQ(test::readFile("first.particle"), test::readFile("second.particle"));
    EXPECT_NE(test::readFile("second.particle").find("\"keys                 0.5 01020304\""),
              std::string::npos);

    plugin.reset(); // takes its objects out of the template and of the live system
    EXPECT_EQ(live->getNumEmitters(), 0);
    live->update(0.05f);
    plugin.emplace("plugin_particlefx.dll");
    EXPECT_TRUE(manager.parseScript("all.particle")) << "the dictionaries are filled again";
    manager.saveScript("third.particle");
    EXPECT_EQ(test::readFile("third.particle").size(), test::readFile("first.particle").size());
    manager.destroySystem(live);
}

} // namespace
} // namespace Qel
