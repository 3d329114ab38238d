#include "Tests/Fuzz/particleFuzz.h"

#include "System/File/fileMem.h"
#include "System/System/exception.h"
#include "System/math/rand.h"

namespace {

std::string written(Qel::ParticleSystemMgr &manager)
{
    Qel::cFileMem all;
    Qel::StringVector names;
    manager.getParticleTemplateList().split(names, "\n");
    for (Qel::String const &name : names) {
        if (Qel::ParticleSystem const *const one = manager.getTemplate(name)) {
            one->_serialize(all);
        }
    }
    return {reinterpret_cast<char const *>(all.getData()), all.size()};
}

// Whether the file was taken. A seed, since a copy draws its start delays.
bool takes(Qel::ParticleSystemMgr &manager, FuzzFile const &file)
{
    Qel::cRand::seed(3);
    try {
        return manager.DeserializeTemplates(file.path());
    } catch (Qel::Exception const &) {
        return false;
    }
}

} // namespace

// The bytes are a file of templates. It is taken as a whole or not at all.
std::string fuzzTarget(unsigned char const *data, std::size_t size)
{
    test::Particles particles;
    Qel::ParticleSystemMgr &manager = particles.manager;
    manager.createTemplate("before")->addEmitter("Dot");
    std::string const before = written(manager);
    FuzzFile file;
    file.set(data, size);
    if (!takes(manager, file)) {
        fuzzRequire(written(manager) == before, "a file that is not whole changes nothing");
        return "refused";
    }
    return written(manager) + stateOf(manager);
}
