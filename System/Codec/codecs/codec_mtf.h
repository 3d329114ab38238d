#pragma once

#include "System/Codec/codecFactory.h"
#include "System/System/export.h"

namespace Qel {

/// "CODEC_MTF": moves to front.
///
/// Each byte is replaced by its place in a table of all bytes, where it then goes to the front. The length
/// stays; bytes that were seen lately become small numbers, which a codec behind this one can make use of.
/// The table starts as 0, 1, ..., 255 with each call.
///
/// Published by J. Bentley, D. Sleator, R. Tarjan and V. Wei, "A locally adaptive data compression scheme",
/// 1986.
class QEL_API cCodecMTF : public iCodec {
public:
    bool encode(cFile &in, cFile &out, ...) override; ///< @return false only if @p out does not take it all
    bool decode(cFile &in, cFile &out, ...) override; ///< @return false only if @p out does not take it all

    /// Decodes a buffer.
    /// @param dest    room for @p size bytes; may be @p source
    /// @param source  @p size bytes
    /// @return false for null pointers, and nothing is then done
    static bool decode(void *dest, void const *source, unsigned int size);
};

/// Makes cCodecMTF.
class QEL_API CodecMtfFactory : public CodecFactory {
public:
    String getType() const override;
    iCodec *createInstance(String const &name) override;
};

} // namespace Qel
