#include "Tests/Plugins/archivePlugin.h"

#include "System/File/fileMem.h"
#include "System/Graphics/particle/particle.h"
#include "System/Graphics/particle/particleAffector.h"
#include "System/Graphics/particle/particleEmitter.h"
#include "System/Graphics/particle/particleSystemMgr.h"
#include "System/math/rand.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <map>
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

    /// Particles of an emitter with these parameters in a system of its own.
    std::vector<Particle> born(char const *type, std::map<String, String> const &parameters)
    {
        cRand::seed(1);
        ParticleSystem system;
        system.setParticleQuota(2000);
        ParticleEmitter &emitter = *system.addEmitter(type);
        emitter.setEmitAndDisable(true);
        emitter.setEmissionRate(2000);
        for (auto const &[name, value] : parameters) {
            EXPECT_TRUE(emitter.setParameter(name, value)) << type << ' ' << name;
            EXPECT_EQ(emitter.getParameter(name), value);
        }
        system.update(0);
        EXPECT_EQ(system.getActiveCount(), 2000u);
        return {system.getParticles(), system.getParticles() + system.getActiveCount()};
    }
};

// The direction is z in all rows: rings lie in x and y.
TEST_F(ParticleFxTest, EmitsInsideItsShapes)
{
    auto const flat = [](D3DXVECTOR3 const &v) { return std::hypot(v.x, v.y); };
    struct {
        char const *type;
        std::map<String, String> parameters;
        std::function<bool(D3DXVECTOR3 const &)> isInside;
        double meanSquare; // of the distance from the middle
    } const rows[] = {
        {"Point", {}, [](D3DXVECTOR3 const &v) { return D3DXVec3Length(&v) == 0; }, 0},
        {"Box",
         {{"edges", "2 4 6"}, {"outward", "true"}},
         [](D3DXVECTOR3 const &v) {
             return std::fabs(v.x) <= 1 && std::fabs(v.y) <= 2 && std::fabs(v.z) <= 3;
         },
         (4 + 16 + 36) / 12.0},
        {"Sphere",
         {{"radius", "3"}, {"radius_inner", "0"}, {"outward", "true"}},
         [](D3DXVECTOR3 const &v) { return D3DXVec3Length(&v) <= 3.001f; },
         9 * 3 / 5.0},
        {"Sphere",
         {{"radius", "3"}, {"radius_inner", "2"}, {"outward", "true"}},
         [](D3DXVECTOR3 const &v) { return D3DXVec3Length(&v) >= 1.999f && D3DXVec3Length(&v) <= 3.001f; },
         3 * (243 - 32) / (5 * (27.0 - 8))},
        {"Ring",
         {{"radius", "3"}, {"radius_inner", "1"}, {"outward", "true"}},
         [&](D3DXVECTOR3 const &v) {
             return std::fabs(v.z) < 1e-5f && flat(v) >= 0.999f && flat(v) <= 3.001f;
         },
         (9 + 1) / 2.0},
        {"Cylinder",
         {{"radius", "2"}, {"radius_inner", "0"}, {"height", "6"}, {"outward", "true"}},
         [&](D3DXVECTOR3 const &v) { return std::fabs(v.z) <= 3 && flat(v) <= 2.001f; },
         2 + 36 / 12.0},
    };
    for (auto const &row : rows) {
        auto parameters = row.parameters;
        parameters["direction"] = "0 0 1";
        parameters["position"] = "10 20 30";
        double sum = 0;
        for (Particle const &p : born(row.type, parameters)) {
            D3DXVECTOR3 const at = p.position - D3DXVECTOR3(10, 20, 30);
            ASSERT_TRUE(row.isInside(at)) << row.type << at.x << ' ' << at.y << ' ' << at.z;
            sum += double{D3DXVec3Length(&at)} * D3DXVec3Length(&at);
            ASSERT_NEAR(D3DXVec3Length(&p.direction), 1, 1e-4);
            if (row.parameters.contains("outward")) {
                ASSERT_GT(D3DXVec3Dot(&p.direction, &at), 0);
            }
        }
        EXPECT_NEAR(sum / 2000, row.meanSquare, 0.05 * row.meanSquare) << row.type << " is filled evenly";
    }
}

TEST_F(ParticleFxTest, AffectsItsOwnLivingParticles)
{
    struct {
        char const *type;
        std::map<String, String> parameters;
        std::function<void(Particle const &)> check; // of a particle at x = 2 with direction x, half its life
    } const rows[] = {
        {"LinearForce",
         {{"force", "1 2 3"}},
         [](Particle const &p) { EXPECT_FLOAT_EQ(p.direction.y, 2 * 0.05f); }},
        {"GravityPoint",
         {{"position", "2 4 0"}, {"strength", "8"}, {"falloff", "2"}, {"distance_min", "0"}},
         [](Particle const &p) { EXPECT_FLOAT_EQ(p.direction.y, 8 / 16.0f * 0.05f); }},
        {"ColourFade",
         {{"keys", "0 ff000000 0.25 ff0000ff 0.75 00ff00ff"}},
         [](Particle const &p) { EXPECT_EQ(p.colour, 0x808000FFu); }},
        {"Scale", {{"rate", "-2"}}, [](Particle const &p) { EXPECT_FLOAT_EQ(p.size, 1 - 2 * 0.05f); }},
        {"Rotate",
         {{"speed_min", "90"}, {"speed_max", "90"}},
         [](Particle const &p) { EXPECT_FLOAT_EQ(p.rotation, 0.5f * 0.05f); }},
        {"Drag", {{"drag", "2"}}, [](Particle const &p) { EXPECT_FLOAT_EQ(p.direction.x, std::exp(-0.1f)); }},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.type);
        ParticleSystem system;
        system.setParticleQuota(3);
        ParticleAffector &affector = *system.addAffector(row.type);
        affector.setOnEmitter(1);
        for (auto const &[name, value] : row.parameters) {
            EXPECT_TRUE(affector.setParameter(name, value));
            EXPECT_EQ(affector.getParameter(name), value);
        }
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
        Particle const other = system.getParticles()[0];
        EXPECT_TRUE(other.direction == before.direction && other.colour == before.colour &&
                    other.size == before.size && other.rotation == before.rotation);
        row.check(system.getParticles()[1]);

        // What a stream and a copy keep, and what a cut one does not hurt.
        cFileMem file;
        affector._serialize(file);
        for (unsigned int length = 0; length <= file.size(); ++length) {
            cFileMem part(length, static_cast<unsigned char const *>(file.getData()));
            ParticleAffector *const read = manager._createAffector(row.type, part);
            for (auto const &[name, value] : row.parameters) {
                EXPECT_TRUE(length < file.size() || read->getParameter(name) == value) << name;
            }
            manager._destroyAffector(read);
        }
        ParticleSystem const copy(system);
        auto const &[name, value] = *row.parameters.begin();
        EXPECT_EQ(copy.getAffector(0)->getParameter(name), value);
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
