#include "System/Graphics/particle/particleAffector.h"

#include "System/File/file.h"
#include "System/System/stringConverter.h"

#include <memory>

namespace Qel {

AffectorCommands::CmdOnEmitter ParticleAffector::msOnEmitterCmd;

ParticleAffector::~ParticleAffector() = default;

void ParticleAffector::_initAffector()
{
}

void ParticleAffector::_deserialize(cFile &file)
{
    file.read(&onEmitter, sizeof onEmitter);
}

void ParticleAffector::_serialize(cFile &file)
{
    file.write(&onEmitter, sizeof onEmitter);
}

void ParticleAffector::_initParticle(Particle *, D3DXVECTOR3 const &)
{
}

void ParticleAffector::copyParametersToBinary(ParticleAffector *other) const
{
    other->ParticleAffector::operator=(*this);
}

char const *ParticleAffector::getType() const
{
    return factory->getType();
}

void ParticleAffector::addBaseParameters()
{
    if (ParamDictionary *const dictionary = getParamDictionary()) {
        dictionary->addParameter(
            {"onemitter", "ID of the emitter this affector should affect [readonly]", PARAM_INT},
            &msOnEmitterCmd);
    }
}

ParticleAffectorFactory::~ParticleAffectorFactory() = default;

void ParticleAffectorFactory::destroyAffector(ParticleAffector *affector)
{
    std::default_delete<ParticleAffector>()(affector);
}

namespace AffectorCommands {

String CmdOnEmitter::doGet(void const *target)
{
    auto const *const affector =
        static_cast<ParticleAffector const *>(static_cast<StringInterface const *>(target));
    return StringConverter::toString(int{affector->getOnEmitter()});
}

void CmdOnEmitter::doSet(void *target, String const &value)
{
    auto *const affector = static_cast<ParticleAffector *>(static_cast<StringInterface *>(target));
    affector->setOnEmitter(static_cast<unsigned char>(StringConverter::parseInt(value)));
}

} // namespace AffectorCommands

} // namespace Qel
