#include "Tests/Fuzz/particleFuzz.h"

#include "System/System/exception.h"
#include "System/math/rand.h"

// The bytes are a script. What comes of it can be stepped, whatever its numbers are.
std::string fuzzTarget(unsigned char const *data, std::size_t size)
{
    Qel::cRand::seed(7); // a duration that is set draws how long it lasts
    test::Particles particles;
    Qel::ParticleSystemMgr &manager = particles.manager;
    FuzzFile file;
    file.set(data, size);
    std::string seen;
    try {
        fuzzRequire(manager.parseScript(file.path()), "a script that opens is read");
    } catch (Qel::Exception const &) {
        seen = "thrown ";
    }
    seen += manager.getParticleTemplateList();
    seen += stateOf(manager);
    return seen;
}
