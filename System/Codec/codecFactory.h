#pragma once

#include "System/Codec/codec.h"
#include "System/Patterns/factoryObj.h"

namespace Qel {

/// Makes the codecs of one name, which getType() tells. Registered with CodecManager::addFactory().
///
/// createInstance() gives a codec made by `new`, which CodecManager deletes; the name it is told can be
/// ignored.
using CodecFactory = FactoryObj<iCodec>;

} // namespace Qel
