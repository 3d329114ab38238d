#include "System/File/file.h"
#include "System/Graphics/particle/particleAffector.h"
#include "System/Graphics/particle/particleEmitter.h"
#include "System/Graphics/particle/particleSystem.h"
#include "System/Graphics/particle/particleSystemMgr.h"

namespace Qel {

namespace {

void writeBool(cFile &file, bool value)
{
    file.write_8(static_cast<unsigned char>(value));
}

void readBool(cFile &file, bool &value)
{
    unsigned char byte;
    if (file.read_8(byte)) {
        value = byte != 0;
    }
}

} // namespace

void ParticleSystem::_serialize(cFile &file) const
{
    file.write_string(name);
    file.write_string(templateName);
    file.write_vec3d(boundingBox.getMinimum());
    file.write_vec3d(boundingBox.getMaximum());
    file.write_32(userData);
    writeBool(file, bound);
    file.write_float(boundExpo);
    writeBool(file, emitting);
    writeBool(file, affecting);
    writeBool(file, alive);
    writeBool(file, ignoreRotation);
    file.write_float(timeClampMin);
    file.write_float(timeClampMax);
    writeBool(file, m_hasStreaks);
    writeBool(file, m_hasNonIntense);
    writeBool(file, softParticles);
    file.write_32(static_cast<unsigned int>(emitters.size()));
    for (ParticleEmitter *const emitter : emitters) {
        file.write_string(emitter->getType());
        emitter->_serialize(file);
    }
    file.write_32(static_cast<unsigned int>(affectors.size()));
    for (ParticleAffector *const affector : affectors) {
        file.write_string(affector->getType());
        affector->_serialize(file);
    }
    file.write_32(quota);
    file.write_vec3d(motion);
    file.write_float(timeAlive);
}

ParticleSystem::ParticleSystem(cFile &file)
{
    initParameters();
    file.read_string(name);
    file.read_string(templateName);
    D3DXVECTOR3 least(0, 0, 0);
    D3DXVECTOR3 most(0, 0, 0);
    file.read_vec3d(least);
    file.read_vec3d(most);
    boundingBox = cBoundingBoxAA(least, most);
    file.read_32(userData);
    readBool(file, bound);
    file.read_float(boundExpo);
    readBool(file, emitting);
    readBool(file, affecting);
    readBool(file, alive);
    readBool(file, ignoreRotation);
    file.read_float(timeClampMin);
    file.read_float(timeClampMax);
    readBool(file, m_hasStreaks);
    readBool(file, m_hasNonIntense);
    readBool(file, softParticles);
    try {
        ParticleSystemMgr &manager = ParticleSystemMgr::Instance();
        String type;
        unsigned int count = 0;
        file.read_32(count);
        for (; count != 0 && file.read_string(type); --count) {
            emitters.reserve(emitters.size() + 1);
            ParticleEmitter *const emitter = manager._createEmitter(type, file);
            if (emitter != nullptr && emitters.size() < mostEmitters) {
                emitters.push_back(emitter);
            } else {
                manager._destroyEmitter(emitter); // one too many: read, so that what follows is found
            }
        }
        count = 0;
        file.read_32(count);
        for (; count != 0 && file.read_string(type); --count) {
            makeRoomForAffector();
            ParticleAffector *const affector = manager._createAffector(type, file);
            if (affector != nullptr && affectors.size() < mostAffectors) {
                affectors.push_back(affector);
            } else {
                manager._destroyAffector(affector);
            }
        }
    } catch (...) {
        removeAllEmitters();
        removeAllAffectors();
        throw;
    }
    file.read_32(quota);
    file.read_vec3d(motion);
    file.read_float(timeAlive);
    modified = true;
    editorScriptModified = false;
}

} // namespace Qel
