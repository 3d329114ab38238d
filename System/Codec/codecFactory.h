#pragma once

#include "System/Codec/codec.h"
#include "System/Patterns/factoryObj.h"

namespace Qel {

/// Makes the codecs of one name, which getType() tells. Registered with CodecManager::addFactory().
///
/// createInstance() gives a codec made by `new`, which CodecManager deletes; the name it is told can be
/// ignored.
class QEL_API CodecFactory : public FactoryObj<iCodec> {
public:
    String getType() const override = 0;
    iCodec *createInstance(String const &name) override = 0;
};

} // namespace Qel
