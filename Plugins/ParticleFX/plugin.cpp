#include "affectors.h"
#include "colourFade.h"
#include "emitters.h"

#include "System/Graphics/particle/particleSystemMgr.h"

#include <memory>
#include <tuple>

namespace {

struct Types {
    std::tuple<fx::ShapeFactory<fx::Point>, fx::ShapeFactory<fx::Box>, fx::ShapeFactory<fx::Sphere>,
               fx::ShapeFactory<fx::Ring>, fx::ShapeFactory<fx::Cylinder>>
        emitters;
    std::tuple<fx::AffectorFactory<fx::LinearForce>, fx::AffectorFactory<fx::GravityPoint>,
               fx::AffectorFactory<fx::ColourFade>, fx::AffectorFactory<fx::Scale>,
               fx::AffectorFactory<fx::Rotate>, fx::AffectorFactory<fx::Drag>>
        affectors;
};

std::unique_ptr<Types> types;

} // namespace

extern "C" QEL_API void dllStartPlugin()
{
    types = std::make_unique<Types>();
    if (Qel::ParticleSystemMgr *const manager = Qel::ParticleSystemMgr::InstancePtr()) {
        std::apply([manager](auto &...one) { (manager->addEmitterFactory(&one), ...); }, types->emitters);
        std::apply([manager](auto &...one) { (manager->addAffectorFactory(&one), ...); }, types->affectors);
    }
}

// With all that the types have made and that templates and systems still hold.
extern "C" QEL_API void dllStopPlugin()
{
    if (Qel::ParticleSystemMgr *const manager = Qel::ParticleSystemMgr::InstancePtr()) {
        std::apply([manager](auto &...one) { (manager->removeEmitterFactory(&one), ...); }, types->emitters);
        std::apply([manager](auto &...one) { (manager->removeAffectorFactory(&one), ...); },
                   types->affectors);
    }
    types.reset();
}
