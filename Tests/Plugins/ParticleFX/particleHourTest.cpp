#include "Tests/Plugins/archivePlugin.h"

#include "System/Graphics/particle/particleSystemMgr.h"
#include "System/math/rand.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <vector>

#ifdef __SANITIZE_ADDRESS__
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#else
#include <malloc.h>
#endif

namespace Qel {
namespace {

std::size_t heldBytes()
{
#ifdef __SANITIZE_ADDRESS__
    return __sanitizer_get_current_allocated_bytes();
#else
    struct mallinfo2 const info = mallinfo2();
    return info.uordblks + info.hblkhd;
#endif
}

// All systems of the sample host, carried around. What the first ten minutes need is enough for
// the hour.
TEST(ParticleHour, KeepsItsMemoryFlat)
{
    test::TempFolder folder;
    test::LogLines log;
    PluginMgr plugins;
    ParticleSystemMgr manager;
    StartedPlugin plugin("plugin_particlefx.dll");
    cRand::seed(1);
    for (auto const &entry : std::filesystem::directory_iterator(PARTICLE_SCRIPTS)) {
        ASSERT_TRUE(manager.parseScript(String(entry.path().string())));
    }
    StringVector names;
    manager.getParticleTemplateList().split(names, "\n");
    std::vector<ParticleSystem *> systems;
    for (String const &name : names) {
        systems.push_back(manager.createSystem(name, name));
    }
    ASSERT_EQ(systems.size(), 12u);

    constexpr int framesPerSecond = 15;
    std::size_t most = 0;
    std::size_t mostLater = 0;
    std::uint64_t steps = 0; // of a particle
    for (int frame = 0; frame < 3600 * framesPerSecond; ++frame) {
        float const time = static_cast<float>(frame) / framesPerSecond;
        for (ParticleSystem *const system : systems) {
            system->moveParticleSystem({std::cos(time), std::sin(time), 0});
        }
        manager.update(1.0f / framesPerSecond);
        if (frame % framesPerSecond == 0) {
            (time < 600 ? most : mostLater) = std::max(time < 600 ? most : mostLater, heldBytes());
        }
        for (ParticleSystem const *const system : systems) {
            steps += system->getActiveCount();
        }
    }
    EXPECT_GT(steps, 3600u * framesPerSecond * 1000u);
    EXPECT_GT(most, 0u);
    EXPECT_LE(mostLater, most + 4096);
    for (ParticleSystem *const system : systems) {
        manager.destroySystem(system);
    }
}

} // namespace
} // namespace Qel
