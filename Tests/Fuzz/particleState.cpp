#include "Tests/Fuzz/particleFuzz.h"

#include "System/File/fileMem.h"
#include "System/math/rand.h"

std::string stateOf(Qel::ParticleSystemMgr &manager)
{
    Qel::cRand::seed(11);
    Qel::cFileMem seen;
    Qel::StringVector names;
    manager.getParticleTemplateList().split(names, "\n");
    std::size_t steps = 0;
    for (Qel::String const &name : names) {
        Qel::ParticleSystem const *const from = manager.getTemplate(name);
        if (from == nullptr || ++steps > 20) {
            continue; // a line feed in the name
        }
        from->_serialize(seen);
        Qel::ParticleSystem *const system = manager.createSystem(name, name);
        system->setParticleQuota(500);
        for (int i = 0; i < 4; ++i) {
            system->moveParticleSystem({1, 2, 3});
            system->update(0.05f);
            seen.write_32(system->getActiveCount());
            seen.write_vec3d(system->getBoundingBox().getMinimum());
            for (unsigned j = 0; j < system->getActiveCount(); ++j) {
                seen.write_float(system->getParticles()[j].timeToLive);
                seen.write_8(system->getParticles()[j].currentFrame);
            }
        }
        manager.destroySystem(system);
    }
    return {reinterpret_cast<char const *>(seen.getData()), seen.size()};
}
