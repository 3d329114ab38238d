#include "System/Graphics/particle/particleSystem.h"

#include "System/Graphics/particle/particleAffector.h"
#include "System/Graphics/particle/particleEmitter.h"
#include "System/Graphics/particle/particleSystemMgr.h"
#include "System/System/stringConverter.h"
#include "System/math/rand.h"

#include <algorithm>
#include <utility>

namespace Qel {

ParticleSystem::CmdQuota ParticleSystem::msQuotaCmd;
ParticleSystem::CmdBound ParticleSystem::msBoundCmd;
ParticleSystem::CmdBoundExpo ParticleSystem::msBoundExpoCmd;
ParticleSystem::CmdIgnoreRotation ParticleSystem::msIgnoreRotationCmd;
ParticleSystem::CmdSoftParticles ParticleSystem::msSoftParticlesCmd;

namespace {

// A system that outlives the manager still gives its parts back.
void destroy(ParticleEmitter *emitter)
{
    if (ParticleSystemMgr *const manager = ParticleSystemMgr::InstancePtr()) {
        manager->_destroyEmitter(emitter);
    } else if (emitter->getFactory() != nullptr) {
        emitter->getFactory()->destroyEmitter(emitter);
    }
}

void destroy(ParticleAffector *affector)
{
    if (ParticleSystemMgr *const manager = ParticleSystemMgr::InstancePtr()) {
        manager->_destroyAffector(affector);
    } else if (affector->getFactory() != nullptr) {
        affector->getFactory()->destroyAffector(affector);
    }
}

template <class Part>
Part *findByType(std::vector<Part *> const &parts, String const &type)
{
    auto const place = std::find_if(parts.begin(), parts.end(),
                                    [&](Part const *part) { return type.compare(part->getType()) == 0; });
    return place == parts.end() ? nullptr : *place;
}

ParticleSystem const &systemOf(void const *target)
{
    return *static_cast<ParticleSystem const *>(static_cast<StringInterface const *>(target));
}

ParticleSystem &systemOf(void *target)
{
    return *static_cast<ParticleSystem *>(static_cast<StringInterface *>(target));
}

} // namespace

ParticleSystem::ParticleSystem()
{
    initParameters();
    _initialize();
}

ParticleSystem::ParticleSystem(String const &systemName) : name(systemName)
{
    initParameters();
    _initialize();
}

ParticleSystem::ParticleSystem(String const &systemName, String const &nameOfTemplate)
    : name(systemName), templateName(nameOfTemplate)
{
    initParameters();
    _initialize();
}

ParticleSystem::ParticleSystem(ParticleSystem const &other) : StringInterface(other)
{
    initParameters();
    _initializeFrom(other);
    timeClampMin = 0.0f;
    timeClampMax = 0.08f;
}

ParticleSystem &ParticleSystem::operator=(ParticleSystem const &other)
{
    if (this != &other) {
        removeAllEmitters();
        removeAllAffectors();
        _initializeFrom(other);
    }
    return *this;
}

ParticleSystem::~ParticleSystem()
{
    removeAllEmitters();
    removeAllAffectors();
    freePool();
}

void ParticleSystem::initParameters()
{
    if (!createParamDictionary("ParticleSystem")) {
        return;
    }
    ParamDictionary *const dictionary = getParamDictionary();
    dictionary->addParameter(
        {"quota", "The maximum number of particle allowed at once in this system.", PARAM_UINT}, &msQuotaCmd);
    dictionary->addParameter(
        {"bound", "If enabled, particleSystem is bound to it's own coordinate-space", PARAM_BOOL},
        &msBoundCmd);
    dictionary->addParameter({"bound_expo", "Bound exponent", PARAM_FLOAT}, &msBoundExpoCmd);
    dictionary->addParameter({"ignorerotation", "If enabled, rotation of particles is ignored", PARAM_BOOL},
                             &msIgnoreRotationCmd);
    dictionary->addParameter(
        {"soft", "Fade particles with depth to avoid visible intersections with the world geometry",
         PARAM_BOOL},
        &msSoftParticlesCmd);
}

void ParticleSystem::_initialize()
{
    freePool();
    boundingBox = cBoundingBoxAA();
    userData = 0;
    bound = true;
    boundExpo = 0.0f;
    emitting = true;
    affecting = true;
    alive = false;
    m_nextQuota.reset();
    ignoreRotation = false;
    timeClampMin = 0.0f;
    timeClampMax = 0.08f;
    m_hasStreaks = false;
    m_hasNonIntense = false;
    softParticles = false;
    quota = 0;
    motion = D3DXVECTOR3(0, 0, 0);
    timeAlive = 0.0f;
    modified = false;
    editorScriptModified = false;
}

void ParticleSystem::_initializeFrom(ParticleSystem const &source)
{
    name = source.name;
    templateName = source.templateName;
    boundingBox = source.boundingBox;
    userData = source.userData;
    quota = source.quota;
    freePool();
    timeAlive = 0.0f;
    bound = source.bound;
    boundExpo = source.boundExpo;
    softParticles = source.softParticles;
    editorScriptModified = source.editorScriptModified;
    emitting = !source.emitters.empty();
    affecting = !source.affectors.empty();
    alive = false;
    ignoreRotation = source.ignoreRotation;
    timeClampMin = source.timeClampMin;
    timeClampMax = source.timeClampMax;
    motion = source.motion;

    // Clears what is known of the emitters: recheck() tells it of the new ones.
    removeAllEmitters();
    removeAllAffectors();
    try {
        for (ParticleEmitter const *const from : source.emitters) {
            if (ParticleEmitter *const emitter = addEmitter(from->getType())) {
                from->copyParametersToBinary(emitter);
            }
        }
        for (ParticleAffector const *const from : source.affectors) {
            if (ParticleAffector *const affector = addAffector(from->getType())) {
                from->copyParametersToBinary(affector);
            }
        }
    } catch (...) {
        // A constructor that fails here has no destructor to give back what stands.
        removeAllEmitters();
        removeAllAffectors();
        throw;
    }
    for (ParticleEmitter *const emitter : emitters) {
        float const least = emitter->getMinStartDelay();
        float const delay = least + cRand::mt.Random01() * (emitter->getMaxStartDelay() - least);
        if (delay > 0) {
            emitter->setStartDelay(delay);
        }
    }
}

bool ParticleSystem::setParameter(String const &parameter, String const &value)
{
    return StringInterface::setParameter(parameter, value);
}

void ParticleSystem::reset()
{
    _initialize();
}

void ParticleSystem::recheck()
{
    m_hasStreaks = false;
    m_hasNonIntense = false;
    for (ParticleEmitter const *const emitter : emitters) {
        m_hasStreaks |= emitter->hasStreaks();
        noteEmitter(*emitter);
    }
}

void ParticleSystem::noteEmitter(ParticleEmitter const &emitter)
{
    m_hasNonIntense |= !emitter.isIntense();
}

ParticleEmitter *ParticleSystem::addEmitter(String const &type)
{
    // One byte numbers them, and 255 stands for all.
    if (emitters.size() == mostEmitters) {
        return nullptr;
    }
    emitters.reserve(emitters.size() + 1);
    ParticleEmitter *const emitter = ParticleSystemMgr::Instance()._createEmitter(type);
    if (emitter != nullptr) {
        emitters.push_back(emitter);
        modified = true;
        noteEmitter(*emitter);
    }
    return emitter;
}

ParticleEmitter *ParticleSystem::getEmitter(unsigned short i) const
{
    return i < emitters.size() ? emitters[i] : nullptr;
}

ParticleEmitter *ParticleSystem::findEmitter(String const &type) const
{
    return findByType(emitters, type);
}

bool ParticleSystem::removeEmitter(unsigned int i)
{
    return takeOut(i, false);
}

bool ParticleSystem::removeEmitter(String const &type)
{
    auto const place = std::find(emitters.begin(), emitters.end(), findEmitter(type));
    return takeOut(static_cast<unsigned int>(place - emitters.begin()), true);
}

bool ParticleSystem::takeOut(unsigned int i, bool isDestroyed)
{
    if (i >= emitters.size()) {
        return false;
    }
    ParticleEmitter *const emitter = emitters[i];
    bool const counts = emitter->hasStreaks() || !emitter->isIntense();
    emitters.erase(emitters.begin() + i);
    if (isDestroyed) {
        destroy(emitter);
    }
    _removeAllAffectorsOnEmitter(static_cast<unsigned char>(i));
    modified = true;
    if (counts) {
        recheck();
    }
    return true;
}

void ParticleSystem::removeAllEmitters()
{
    for (ParticleEmitter *const emitter : std::exchange(emitters, {})) {
        destroy(emitter);
    }
    modified = true;
    m_hasStreaks = false;
    m_hasNonIntense = false;
}

void ParticleSystem::_dropEmitters(ParticleEmitterFactory const *factory, bool isDestroyed)
{
    for (std::size_t i = emitters.size(); i-- > 0;) {
        if (emitters[i]->getFactory() == factory) {
            // With those of its affectors that stand: nobody would have them.
            for (std::size_t j = isDestroyed ? affectors.size() : 0; j-- > 0;) {
                ParticleAffector *const affector = affectors[j];
                if (affector->isOnEmitter(static_cast<unsigned char>(i))) {
                    removeAffector(static_cast<unsigned int>(j));
                    destroy(affector);
                }
            }
            takeOut(static_cast<unsigned int>(i), isDestroyed);
        }
    }
}

void ParticleSystem::_dropAffectors(ParticleAffectorFactory const *factory, bool isDestroyed)
{
    for (std::size_t i = affectors.size(); i-- > 0;) {
        if (ParticleAffector *const affector = affectors[i]; affector->getFactory() == factory) {
            removeAffector(static_cast<unsigned int>(i));
            if (isDestroyed) {
                destroy(affector);
            }
        }
    }
}

void ParticleSystem::setEmitterData(PoolBlk const *data)
{
    for (ParticleEmitter *const emitter : emitters) {
        emitter->setEmitterData(data);
    }
}

// Ahead of making one, so that none is lost for lack of memory; in steps that keep many of them cheap.
void ParticleSystem::makeRoomForAffector()
{
    if (affectors.size() == affectors.capacity()) {
        affectors.reserve(2 * affectors.size() + 8);
    }
}

ParticleAffector *ParticleSystem::addAffector(String const &type)
{
    if (affectors.size() == mostAffectors) {
        return nullptr;
    }
    makeRoomForAffector();
    ParticleAffector *const affector = ParticleSystemMgr::Instance()._createAffector(type);
    if (affector != nullptr) {
        affectors.push_back(affector);
        modified = true;
    }
    return affector;
}

ParticleAffector *ParticleSystem::getAffector(unsigned short i) const
{
    return i < affectors.size() ? affectors[i] : nullptr;
}

ParticleAffector *ParticleSystem::findAffector(String const &type) const
{
    return findByType(affectors, type);
}

bool ParticleSystem::removeAffector(unsigned int i)
{
    if (i >= affectors.size()) {
        return false;
    }
    affectors.erase(affectors.begin() + i);
    modified = true;
    return true;
}

bool ParticleSystem::removeAffector(String const &type)
{
    auto const place = std::find(affectors.begin(), affectors.end(), findAffector(type));
    if (place == affectors.end()) {
        return false;
    }
    ParticleAffector *const affector = *place;
    affectors.erase(place);
    destroy(affector);
    modified = true;
    return true;
}

void ParticleSystem::removeAllAffectors()
{
    for (ParticleAffector *const affector : std::exchange(affectors, {})) {
        destroy(affector);
    }
    modified = true;
}

void ParticleSystem::_removeAllAffectorsOnEmitter(unsigned char index)
{
    std::erase_if(affectors,
                  [index](ParticleAffector const *affector) { return affector->isOnEmitter(index); });
    for (ParticleAffector *const affector : affectors) {
        unsigned char const on = affector->getOnEmitter();
        if (on > index && on != Particle::allEmitters) {
            affector->setOnEmitter(static_cast<unsigned char>(on - 1));
        }
    }
    modified = true;
}

String const &ParticleSystem::getMaterialName(unsigned char i) const
{
    static String const none;
    return i < emitters.size() ? emitters[i]->getMaterialName() : none;
}

bool ParticleSystem::isMaterialModified()
{
    bool isAny = false;
    for (ParticleEmitter *const emitter : emitters) {
        isAny |= emitter->isMaterialModified();
    }
    return isAny;
}

bool ParticleSystem::isSystemModified()
{
    return std::exchange(modified, false);
}

String ParticleSystem::CmdQuota::doGet(void const *target)
{
    return StringConverter::toString(systemOf(target).quota);
}

void ParticleSystem::CmdQuota::doSet(void *target, String const &value)
{
    systemOf(target).setParticleQuota(static_cast<unsigned int>(StringConverter::parseInt(value)));
}

String ParticleSystem::CmdBound::doGet(void const *target)
{
    return StringConverter::toString(systemOf(target).bound);
}

void ParticleSystem::CmdBound::doSet(void *target, String const &value)
{
    systemOf(target).bound = StringConverter::parseBool(value);
}

String ParticleSystem::CmdBoundExpo::doGet(void const *target)
{
    return StringConverter::toString(systemOf(target).boundExpo);
}

void ParticleSystem::CmdBoundExpo::doSet(void *target, String const &value)
{
    systemOf(target).boundExpo = StringConverter::parseReal(value);
}

String ParticleSystem::CmdIgnoreRotation::doGet(void const *target)
{
    return StringConverter::toString(systemOf(target).ignoreRotation);
}

void ParticleSystem::CmdIgnoreRotation::doSet(void *target, String const &value)
{
    systemOf(target).ignoreRotation = StringConverter::parseBool(value);
}

String ParticleSystem::CmdSoftParticles::doGet(void const *target)
{
    return StringConverter::toString(systemOf(target).softParticles);
}

void ParticleSystem::CmdSoftParticles::doSet(void *target, String const &value)
{
    systemOf(target).softParticles = StringConverter::parseBool(value);
}

} // namespace Qel
