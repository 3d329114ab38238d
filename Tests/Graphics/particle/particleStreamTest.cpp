#include "Tests/Tools/tempFolder.h"
#include "Tests/Tools/testParticles.h"

#include "System/File/fileMem.h"
#include "System/System/exception.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <string>

namespace Qel {
namespace {

// Written by hand, so that the order and width of each field are told from outside.
std::string u8(unsigned value)
{
    return {static_cast<char>(value)};
}
std::string u32(std::uint32_t value)
{
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8) {
        bytes += static_cast<char>(value >> shift);
    }
    return bytes;
}
std::string f(float value)
{
    return u32(std::bit_cast<std::uint32_t>(value));
}
std::string text(std::string const &value)
{
    return u32(static_cast<std::uint32_t>(value.size())) + value;
}

std::string emitterBytes()
{
    std::string bytes = text("mat") + f(1) + f(2) + f(3) + f(0) + f(0) + f(1) + f(0) + f(1) + f(0);
    bytes +=
        f(0) + f(20) + f(90 * 0.017453292f) + f(45 * 0.017453292f) + f(0.017453292f) + f(2 * 0.017453292f);
    bytes += f(3) + f(4) + f(5) + f(6) + f(0) + f(7) + f(7) + f(7) + f(8) + f(9) + f(0);
    bytes += u8(1) + u8(1) + f(1.5f) + f(2.5f) + f(0.25f) + f(12) + u8(0) + u8(1) + u8(1);
    return bytes + f(0.5f) + f(0.75f) + f(0.625f) + u8(1) + u8(6) + f(3) + f(4);
}

void setUp(ParticleEmitter &emitter)
{
    StringVector lines;
    String(
        "material mat;position 1 2 3;direction 0 0 1;emission_rate 20;emissionangle 90;emissionanglemin 45;"
        "angle 1;angle_max 2;velocity_min 3;velocity_max 4;time_to_live_min 5;time_to_live_max 6;"
        "duration_min 7;duration_max 7;repeat_delay_min 8;repeat_delay_max 9;size 1.5;size_max 2.5;"
        "brightness 0.25;animSpeed 12;centered false;perspective true;emit_and_disable true;"
        "start_delay_min 0.5;start_delay_max 0.75;intense true;animFrames 6;streak_length 3;streak_size 4")
        .split(lines, ";");
    for (String const &line : lines) {
        StringVector words;
        line.split(words, " ", 1);
        EXPECT_TRUE(emitter.setParameter(words[0], words[1])) << line;
    }
    emitter.setEnabled(true);
    emitter.setStartDelay(0.625f);
}

std::string systemBytes(std::string const &name)
{
    std::string bytes = text(name) + text("tmpl") + f(0) + f(0) + f(0) + f(0) + f(0) + f(0) + u32(77);
    bytes += u8(0) + f(1.5f) + u8(1) + u8(0) + u8(0) + u8(1) + f(0) + f(0.08f) + u8(0) + u8(1) + u8(1);
    bytes += u32(1) + text("Dot") + emitterBytes() + u32(1) + text("Note") + u8(0);
    return bytes + u32(40) + f(1) + f(2) + f(3) + f(0);
}

void setUp(ParticleSystem &system)
{
    system.setTemplateName("tmpl");
    system.setUserData(77);
    system.setBound(false);
    system.setBoundExpo(1.5f);
    system.setAffecting(false);
    system.setIgnoreRotation(true);
    system.setSoftParticles(true);
    setUp(*system.addEmitter("Dot"));
    system.addAffector("Note")->setOnEmitter(0);
    system.setParticleQuota(40);
    system.moveParticleSystem({1, 2, 3});
}

unsigned char const *raw(std::string const &bytes)
{
    return reinterpret_cast<unsigned char const *>(bytes.data());
}

std::string bytesOf(ParticleSystem const &system)
{
    cFileMem file;
    system._serialize(file);
    return {reinterpret_cast<char const *>(file.getData()), file.size()};
}

TEST(ParticleStream, IsByteForByteWhatIsAgreed)
{
    test::Particles particles;
    ParticleSystem system("name");
    setUp(system);
    std::string const expected = systemBytes("name");
    EXPECT_EQ(bytesOf(system), expected);

    cFileMem file(static_cast<unsigned int>(expected.size()), raw(expected));
    ParticleSystem const read(file);
    EXPECT_EQ(bytesOf(read), expected);
    EXPECT_EQ(file.tell(), expected.size());
    EXPECT_FALSE(read.isEditorScriptModified());

    // A stream that ends early leaves the values that did not arrive.
    std::string const bytes = emitterBytes();
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        cFileMem part(static_cast<unsigned int>(length), raw(bytes));
        test::DotEmitter emitter(&particles.dots);
        emitter._deserialize(part);
        EXPECT_EQ(emitter.getStreakSize(), 1);
        EXPECT_EQ(emitter.getEmissionRate(), length < 7 + 36 + 8 ? 10 : 20) << length;
    }
    // A box that stands the wrong way round is put right.
    std::string turned = expected;
    turned.replace(16, 4, f(5));
    cFileMem other(static_cast<unsigned int>(turned.size()), raw(turned));
    EXPECT_EQ(ParticleSystem(other).getBoundingBox().getMaximum(), D3DXVECTOR3(5, 0, 0));
}

TEST(ParticleStream, KeepsTemplatesUnlessAWholeFileIsRead)
{
    test::TempFolder const folder;
    test::Particles particles;
    ParticleSystemMgr &manager = particles.manager;
    manager.SerializeTemplates("none.bin");
    EXPECT_EQ(test::readFile("none.bin"), u32(0));

    ParticleSystem system("name");
    setUp(system);
    system.getEmitter(0)->setMaxStartDelay(-1); // or each copy would draw another
    system.getEmitter(0)->setMinStartDelay(-1);
    manager.addTemplate("a", system);
    manager.addTemplate("b", system);
    manager.SerializeTemplates("two.bin");
    std::string const bytes = test::readFile("two.bin");
    EXPECT_EQ(bytes.size(), 4 + 2 * (5 + systemBytes("name").size()));

    manager.createTemplate("kept");
    String const before = manager.getParticleTemplateList();
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        test::writeFile("cut.bin", bytes.substr(0, length));
        try {
            ASSERT_FALSE(manager.DeserializeTemplates("cut.bin")) << length;
        } catch (Exception const &) { // just as well
        }
        ASSERT_EQ(manager.getParticleTemplateList(), before);
    }
    std::string unknown = bytes;
    unknown.replace(unknown.find("Dot"), 3, "Nil");
    test::writeFile("unknown.bin", unknown);
    EXPECT_THROW(manager.DeserializeTemplates("unknown.bin"), Exception);
    EXPECT_FALSE(manager.DeserializeTemplates("absent.bin"));
    EXPECT_EQ(manager.getParticleTemplateList(), before);

    EXPECT_TRUE(manager.DeserializeTemplates("two.bin"));
    EXPECT_EQ(manager.getParticleTemplateList(), "a\nb\n");
    manager.SerializeTemplates("again.bin");
    EXPECT_EQ(test::readFile("again.bin").size(), bytes.size());
    EXPECT_TRUE(manager.DeserializeTemplates("none.bin"));
    EXPECT_EQ(manager.getParticleTemplateCount(), 0);
    system.removeAllEmitters();
    EXPECT_EQ(particles.dots.alive, 0);
}

} // namespace
} // namespace Qel
