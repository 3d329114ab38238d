#include "Tests/Tools/logLines.h"
#include "Tests/Tools/tempFolder.h"
#include "Tests/Tools/testParticles.h"

#include "System/System/exception.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace Qel {
namespace {

class ScriptTest : public ::testing::Test {
protected:
    test::TempFolder folder;
    test::LogLines log{3};
    test::Particles particles;
    ParticleSystemMgr &manager = particles.manager;

    std::string read(std::string const &script)
    {
        test::writeFile("s.particle", script);
        log.take();
        EXPECT_TRUE(manager.parseScript("s.particle"));
        return log.take();
    }
    template <class Call>
    static std::string thrownBy(Call call)
    {
        try {
            call();
        } catch (Exception const &e) {
            EXPECT_EQ(e.getNumber(), 4);
            return e.description.c_str();
        }
        return "nothing";
    }
};

TEST_F(ScriptTest, ReadsAndLogsEachLine)
{
    EXPECT_EQ(log.take(),
              "Particle Emitter Type 'Dot' registered\nParticle Affector Type 'Note' registered\n");
    EXPECT_EQ(read("version 1\n"), "");
    std::string const lines = read(R"(version 1 // the first
stray particlesystem "Fire two" /* here */ more {
  "quota 	 12" "bound_expo  1.5" "soft true" "bad 1" lonely
  "emitter Dot"
  emitter Dot { stray "direction 0 0 2" "material" "wrong 5" "size	3" }
  affector Note { "onemitter 0" "who 1" }
  "bound false"
}
"quota 3"
particlesystem Plain { }
)");
    EXPECT_EQ(lines,
              "registering particleTemplate: 'Fire two'\n - quota 12\n - bound_expo 1.5\n - soft true\n"
              "Bad particle system attribute line: 'bad 1' in Fire two\n"
              "Missing Parameter in line: 'lonely' in Fire two\n"
              "Bad particle system attribute line: 'emitter Dot' in Fire two\n"
              " * emitter: 'Dot'\nParticleSystemMgr::_createEmitter() 'Dot'\n"
              "   - direction 0 0 2\n   - material [error]\n"
              "Bad particle emitter attribute line: '\"wrong 5\"' for emitter Dot\n"
              "   - size 3\n * affector: 'Note'\n   - onemitter 0\n"
              "Bad particle affector attribute line: '\"who 1\"' for emitter Note\n"
              " - bound false\nregistering particleTemplate: 'Plain'\n");
    EXPECT_EQ(manager.getParticleTemplateList(), "Fire two\nPlain\n");
    ParticleSystem const &fire = *manager.getTemplate("Fire two");
    EXPECT_EQ(fire.getParticleQuota(), 12u);
    EXPECT_FALSE(fire.isBound());
    EXPECT_EQ(fire.getTemplateName(), "Fire two");
    EXPECT_EQ(fire.getEmitter(0)->getDirection(), D3DXVECTOR3(0, 0, 1));
    EXPECT_EQ(fire.getEmitter(0)->getSizeMax(), 3);
    EXPECT_EQ(fire.getAffector(0)->getOnEmitter(), 0);
}

TEST_F(ScriptTest, ThrowsForUnknownTypesAndGoesOnAfterwards)
{
    test::writeFile("bad.particle", "particlesystem A { emitter Nil { } }");
    log.take();
    std::string const message = "Cannot find requested emitter type: Nil";
    EXPECT_EQ(thrownBy([&] { manager.parseScript("bad.particle"); }), message);
    EXPECT_NE(log.take().find("ParticleSystemMgr::_createEmitter() " + message + "\n"), std::string::npos);
    test::writeFile("bad.particle", "particlesystem A { affector Nil { } }");
    EXPECT_THROW(manager.parseScript("bad.particle"), Exception);
    read("particlesystem A { emitter Dot { \"size 2\" ");
    EXPECT_EQ(manager.getTemplate("A")->getNumEmitters(), 1);
    EXPECT_FALSE(manager.parseScript("absent.particle"));
    EXPECT_EQ(thrownBy([&] { manager.createSystem("x", "None"); }), "Cannot find required template'None'");
    EXPECT_EQ(manager.getParticleSystemCount(), 0);
}

TEST_F(ScriptTest, WritesByteForByteWhatItReads)
{
    read(
        R"(particlesystem "One" { "quota 12" "soft true" emitter Dot { "direction 0 1 0" "animFrames 3" "size 2" }
         affector Note { "onemitter 0" } })");
    // Values stand below each other.
    std::string parameters;
    std::istringstream list(
        "size=2;size_max=2;emissionangle=0;emissionanglemin=0;angle=0;angle_max=0;"
        "direction=0 1 0;emission_rate=10;velocity_min=1;velocity_max=1;time_to_live_min=5;"
        "time_to_live_max=5;position=0 0 0;duration_min=0;duration_max=0;repeat_delay=0;"
        "repeat_delay_min=0;repeat_delay_max=0;start_delay_min=0;start_delay_max=0;intense=false;"
        "material=;animSpeed=1;animFrames=3;brightness=0;centered=true;perspective=false;"
        "emit_and_disable=false;streak_length=0;streak_size=1;");
    for (std::string name, value; std::getline(std::getline(list, name, '='), value, ';');) {
        parameters += "    \"" + name + std::string(21 - name.size(), ' ') + value + "\"\n";
    }
    std::string const expected = R"(version 1

particlesystem "One"
{
  "quota  12"
  "bound  true"
  "bound_expo  0"
  "ignorerotation  false"
  "soft  true"

  emitter Dot
  {
)" + parameters + R"(
  }
  affector Note
  {
    "onemitter            0"

  }

}
)";
    EXPECT_TRUE(manager.saveScript("out.particle"));
    EXPECT_EQ(test::readFile("out.particle"), expected);
    manager.destroyTemplate("One");
    EXPECT_TRUE(manager.parseScript("out.particle"));
    manager.getTemplate("One")->setEditorScriptModified();
    manager.createTemplate("../up/x");
    EXPECT_TRUE(manager.saveScriptDirectory("", true));
    EXPECT_EQ(test::readFile("One.particle"), expected);
    EXPECT_FALSE(std::filesystem::exists(".._up_x.particle"));
    EXPECT_TRUE(manager.saveScriptDirectory("", false));
    EXPECT_TRUE(std::filesystem::exists(".._up_x.particle")) << "a name leads to no other folder";
    EXPECT_TRUE(manager.saveScript("absent/out.particle"));
}

TEST_F(ScriptTest, PoursNewTemplatesIntoLiveSystems)
{
    read("particlesystem A { \"quota 5\" emitter Dot { \"emission_rate 100\" } } particlesystem B { }");
    ParticleSystem *const live = manager.createSystem("one", "A");
    ParticleSystem *const other = manager.createSystem("two", "B");
    EXPECT_EQ(live->getName(), "A");
    EXPECT_TRUE(live->isEmitting() && live->hasNonIntense());
    EXPECT_EQ(manager.getSystem("one"), live);
    live->setName("mine");
    live->update(0.08f);
    EXPECT_EQ(live->getActiveCount(), 5u);
    test::writeFile("s.particle", "particlesystem A { \"quota 9\" }");
    log.take();
    manager.rebind("A");
    EXPECT_EQ(log.take(), "ParticleSystemMgr::rebind()\nregistering particleTemplate: 'A'\n"
                          "ParticleSystemMgr::_destroyEmitter() 'Dot'\n - quota 9\n- reload s.particle\n"
                          "- name='mine' (template='A')\nParticleSystemMgr::_destroyEmitter() 'Dot'\n"
                          "- name='B' (template='B') unknown\n");
    EXPECT_EQ(live->getParticleQuota(), 9u);
    EXPECT_EQ(live->getName(), "mine");
    EXPECT_EQ(live->getActiveCount(), 0u);

    manager.rebind("Nobody");
    log.take();
    manager.rebind("");
    EXPECT_EQ(log.take(), "ParticleSystemMgr::rebind()\n"
                          "registering particleTemplate: 'A'\n - quota 9\n- reload s.particle\n"
                          "- name='mine' (template='A')\n- name='B' (template='B') unknown\n");

    // A name that is taken: the second one is not registered, and not stepped.
    ParticleSystem *const second = manager.createSystem("two", 3);
    EXPECT_EQ(manager.getSystem("two"), other);
    FrameEvent event{};
    event.sameEventTime = 0.05f;
    EXPECT_TRUE(manager.frameStarted(event));
    EXPECT_EQ(other->getTimeAlive(), 0.05f);
    EXPECT_EQ(second->getTimeAlive(), 0);
    std::unique_ptr<ParticleSystem> const mine(second);
    manager.destroySystem(second);
    EXPECT_EQ(manager.getParticleSystemList(), "one\ntwo\n");
    manager.destroySystem(live);
    manager.destroySystem(other);
    manager.setTimeFactor(0.5f);
    manager.setTimeFactor(-1);
    EXPECT_EQ(manager.getTimeFactor(), 0.5f);
}

TEST_F(ScriptTest, FindsScriptsInFoldersAndTakesTypesBack)
{
    std::filesystem::create_directories("a/b");
    test::writeFile("a/b/x.particle",
                    "particlesystem X { emitter Dot { } affector Note { } emitter Dot { } }");
    test::writeFile("a/y.txt", "particlesystem Y { }");
    EXPECT_FALSE(manager.parseScriptDirectory("none/"));
    EXPECT_TRUE(manager.parseScriptDirectory("a/"));
    EXPECT_EQ(manager.getParticleTemplateList(), "X\n");
    ParticleSystem *const live = manager.createSystem("x", "X");
    manager.removeEmitterFactory(&particles.dots);
    manager.removeAffectorFactory(&particles.notes);
    EXPECT_EQ(particles.dots.alive, 0);
    EXPECT_EQ(particles.notes.alive, 0);
    EXPECT_TRUE(manager.getEmitterFactories().empty() && manager.getAffectorFactories().empty());
    live->update(0.1f);
    EXPECT_THROW(live->addEmitter("Dot"), Exception);
    manager.destroySystem(live);
}

} // namespace
} // namespace Qel
