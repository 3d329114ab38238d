#include "System/Graphics/particle/particleSystemMgr.h"

#include "System/File/fileMem.h"
#include "System/Graphics/particle/particleAffector.h"
#include "System/Graphics/particle/particleEmitter.h"
#include "System/System/exception.h"
#include "System/System/logManager.h"
#include "System/System/pluginMgr.h"

#include "Support/OS/file.h"

#include <memory>
#include <utility>

namespace Qel {

template class tSingleton<ParticleSystemMgr>;

namespace {

constexpr char const *sourceFile = "System/Graphics/particle/particleSystemMgr";

template <class Factory>
void eraseFactory(std::map<String, Factory *> &factories, Factory const *factory)
{
    std::erase_if(factories, [factory](auto const &entry) { return entry.second == factory; });
}

template <class Factory>
StringVector typesOf(std::map<String, Factory *> const &factories)
{
    StringVector types;
    for (auto const &entry : factories) {
        types.push_back(entry.second->getType());
    }
    return types;
}

template <class Map>
String namesOf(Map const &map)
{
    String names;
    for (auto const &entry : map) {
        names += entry.first;
        names += '\n';
    }
    return names;
}

// Counts what a reader did not get, on behalf of readers that do not tell.
class ReadWatch final : public cFile {
public:
    explicit ReadWatch(cFile &inner) : m_inner(inner) {}

    unsigned int read(void *buffer, unsigned int size) override
    {
        unsigned int const got = m_inner.read(buffer, size);
        m_fellShort |= got < size;
        return got;
    }
    unsigned int write(void const *, unsigned int) override { return 0; }
    unsigned int seek(unsigned int position) override { return m_inner.seek(position); }
    unsigned int size() const override { return m_inner.size(); }
    unsigned int tell() const override { return m_inner.tell(); }
    eFileClass getType() const override { return m_inner.getType(); }

    bool fellShort() const { return m_fellShort; }

private:
    cFile &m_inner;
    bool m_fellShort = false;
};

} // namespace

ParticleSystemMgr::ParticleSystemMgr() = default;

ParticleSystemMgr::~ParticleSystemMgr()
{
    // While this is still the instance: what they hold goes back through it.
    templates.clear();
}

bool ParticleSystemMgr::frameStarted(FrameEvent const &event)
{
    update(event.sameEventTime);
    return true;
}

void ParticleSystemMgr::setTimeFactor(float factor)
{
    if (!(factor < 0)) {
        timeFactor = factor;
    }
}

void ParticleSystemMgr::update(float dt)
{
    for (auto const &entry : systems) {
        entry.second->update(dt);
    }
}

template <class Operation>
void ParticleSystemMgr::forEachSystem(Operation const &operation)
{
    for (auto &entry : templates) {
        operation(entry.second);
    }
    for (auto const &entry : systems) {
        operation(*entry.second);
    }
}

void ParticleSystemMgr::addEmitterFactory(ParticleEmitterFactory *factory)
{
    if (factory == nullptr) {
        return;
    }
    String const type = factory->getType();
    emitterFactories[type] = factory;
    PluginMgr::registered(factory, [factory] {
        if (ParticleSystemMgr *const manager = InstancePtr()) {
            eraseFactory(manager->emitterFactories, factory);
            manager->forEachSystem(
                [factory](ParticleSystem &system) { system._dropEmitters(factory, false); });
        }
    });
    logMessage("Particle Emitter Type '" + type + "' registered\n", 2);
}

void ParticleSystemMgr::addAffectorFactory(ParticleAffectorFactory *factory)
{
    if (factory == nullptr) {
        return;
    }
    String const type = factory->getType();
    affectorFactories[type] = factory;
    PluginMgr::registered(factory, [factory] {
        if (ParticleSystemMgr *const manager = InstancePtr()) {
            eraseFactory(manager->affectorFactories, factory);
            manager->forEachSystem(
                [factory](ParticleSystem &system) { system._dropAffectors(factory, false); });
        }
    });
    logMessage("Particle Affector Type '" + type + "' registered\n", 2);
}

void ParticleSystemMgr::removeEmitterFactory(ParticleEmitterFactory *factory)
{
    eraseFactory(emitterFactories, factory);
    forEachSystem([factory](ParticleSystem &system) { system._dropEmitters(factory, true); });
    PluginMgr::unregistered(factory);
}

void ParticleSystemMgr::removeAffectorFactory(ParticleAffectorFactory *factory)
{
    eraseFactory(affectorFactories, factory);
    forEachSystem([factory](ParticleSystem &system) { system._dropAffectors(factory, true); });
    PluginMgr::unregistered(factory);
}

StringVector ParticleSystemMgr::getEmitterFactories() const
{
    return typesOf(emitterFactories);
}

StringVector ParticleSystemMgr::getAffectorFactories() const
{
    return typesOf(affectorFactories);
}

ParticleEmitterFactory &ParticleSystemMgr::emitterFactory(String const &type) const
{
    auto const place = emitterFactories.find(type);
    if (place == emitterFactories.end()) {
        if (LogManager::checkDefLogLevel(3)) {
            LogManager::defLevelMessage(
                "ParticleSystemMgr::_createEmitter() Cannot find requested emitter type: %s\n", type.c_str());
        }
        throw Exception(Exception::UnknownItem, "Cannot find requested emitter type: " + type,
                        "ParticleSystemManager::_createEmitter", sourceFile, __LINE__);
    }
    if (LogManager::checkDefLogLevel(1)) {
        LogManager::defLevelMessage("ParticleSystemMgr::_createEmitter() '%s'\n", type.c_str());
    }
    return *place->second;
}

ParticleAffectorFactory &ParticleSystemMgr::affectorFactory(String const &type) const
{
    auto const place = affectorFactories.find(type);
    if (place == affectorFactories.end()) {
        throw Exception(Exception::UnknownItem, "Cannot find requested affector type: " + type,
                        "ParticleSystemManager::_createAffector", sourceFile, __LINE__);
    }
    return *place->second;
}

ParticleEmitter *ParticleSystemMgr::_createEmitter(String const &type)
{
    return emitterFactory(type).createEmitter();
}

ParticleEmitter *ParticleSystemMgr::_createEmitter(String const &type, cFile &file)
{
    return emitterFactory(type).createEmitter(file);
}

ParticleAffector *ParticleSystemMgr::_createAffector(String const &type)
{
    return affectorFactory(type).createAffector();
}

ParticleAffector *ParticleSystemMgr::_createAffector(String const &type, cFile &file)
{
    return affectorFactory(type).createAffector(file);
}

void ParticleSystemMgr::_destroyEmitter(ParticleEmitter *emitter)
{
    if (emitter == nullptr || emitter->getFactory() == nullptr) {
        return;
    }
    if (LogManager::checkDefLogLevel(1)) {
        LogManager::defLevelMessage("ParticleSystemMgr::_destroyEmitter() '%s'\n", emitter->getType());
    }
    emitter->getFactory()->destroyEmitter(emitter);
}

void ParticleSystemMgr::_destroyAffector(ParticleAffector *affector)
{
    if (affector != nullptr && affector->getFactory() != nullptr) {
        affector->getFactory()->destroyAffector(affector);
    }
}

ParticleSystem *ParticleSystemMgr::createSystem(String const &name, unsigned int quota)
{
    auto system = std::make_unique<ParticleSystem>(name);
    system->setParticleQuota(quota);
    systems.emplace(name, system.get());
    return system.release();
}

ParticleSystem *ParticleSystemMgr::createSystem(String const &name, String const &templateName)
{
    ParticleSystem const *const from = getTemplate(templateName);
    if (from == nullptr) {
        throw Exception(Exception::UnknownItem, "Cannot find required template'" + templateName + "'",
                        "ParticleSystemManager::createSystem", sourceFile, __LINE__);
    }
    auto system = std::make_unique<ParticleSystem>(name);
    *system = *from;
    system->setTemplateName(templateName);
    system->setBound(from->isBound());
    system->setIgnoreRotation(from->getIgnoreRotation());
    system->recheck();
    // Registered when it is whole: a type that is missing leaves no half system behind.
    systems.emplace(name, system.get());
    return system.release();
}

void ParticleSystemMgr::destroySystem(ParticleSystem *system)
{
    for (auto place = systems.begin(); place != systems.end(); ++place) {
        if (place->second == system) {
            std::unique_ptr<ParticleSystem> const owned(system);
            systems.erase(place);
            return;
        }
    }
}

ParticleSystem *ParticleSystemMgr::getSystem(String const &name)
{
    auto const place = systems.find(name);
    return place == systems.end() ? nullptr : place->second;
}

String ParticleSystemMgr::getParticleSystemList() const
{
    return namesOf(systems);
}

ParticleSystem *ParticleSystemMgr::getTemplate(String const &name)
{
    auto const place = templates.find(name);
    return place == templates.end() ? nullptr : &place->second;
}

void ParticleSystemMgr::addTemplate(String const &name, ParticleSystem const &system)
{
    auto const [place, isNew] = templates.try_emplace(name);
    try {
        place->second = system;
    } catch (...) {
        if (isNew) {
            templates.erase(place); // a type is not registered any more: no template rather than half of one
        }
        throw;
    }
}

ParticleSystem *ParticleSystemMgr::createTemplate(String const &name)
{
    ParticleSystem &stored = templates[name];
    stored = ParticleSystem(name, name);
    return &stored;
}

void ParticleSystemMgr::destroyTemplate(String const &name)
{
    templates.erase(name);
}

String ParticleSystemMgr::getParticleTemplateList() const
{
    return namesOf(templates);
}

void ParticleSystemMgr::SerializeTemplates(String path) const
{
    cFileMem file;
    file.write_32(static_cast<unsigned int>(templates.size()));
    for (auto const &[name, system] : templates) {
        file.write_string(name);
        system._serialize(file);
    }
    os::replaceFile(path.c_str(), file.getData(), file.size());
}

bool ParticleSystemMgr::DeserializeTemplates(String path)
{
    cFileMem file;
    if (!file.open(path.c_str())) {
        return false;
    }
    ReadWatch stream(file);
    unsigned int count = 0;
    stream.read_32(count);
    // Aside: a file that ends early or names an unknown type takes nothing away.
    std::map<String, ParticleSystem> fresh;
    for (; count != 0 && !stream.fellShort(); --count) {
        String name;
        if (!stream.read_string(name)) {
            return false;
        }
        ParticleSystem const system(stream);
        fresh.emplace(name, system);
    }
    if (stream.fellShort()) {
        return false;
    }
    templates.swap(fresh);
    return true;
}

} // namespace Qel
