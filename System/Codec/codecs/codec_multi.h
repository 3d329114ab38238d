#pragma once

#include "System/System/export.h"
#include "System/System/stringVector.h"

namespace Qel {

class cFile;
class iCodec;

/// Runs a chain of codecs over a stream: forwards to encode, backwards to decode.
///
/// The names are not stored with the data, so decoding needs a chain of the same names in the same order.
/// Behind what a codec writes for the next one come zeros, up to 200 more bytes than it read: the data come
/// back exactly if the codec that decodes last, the first of the chain, knows its own end, as all but
/// "CODEC_MTF" do.
///
/// @code
/// cCodecMulti chain;
/// chain.addCodec("CODEC_LZ77");
/// chain.addCodec("CODEC_HUFFMAN");
/// chain.encode(text, packed);
/// @endcode
///
/// @par Threads  As CodecManager, whose codecs it uses.
class QEL_API cCodecMulti {
public:
    /// Appends a codec. Whether CodecManager knows the name shows when the chain runs: a stage without a
    /// codec is logged and left out.
    void addCodec(String const &name);

    void reset(); ///< Empties the chain. An empty chain writes nothing

    /// Runs the chain. A stage that fails is not noticed; the next one gets what it has written.
    /// @param in, out  as iCodec::encode(). "CODEC_ZIP" in the first place needs a memory stream in @p in, in
    ///                 the last place in @p out
    /// @return true; false if there is no memory for what lies between two stages, and the chain then ends
    /// @throws Exception as "CODEC_ZIP" does
    bool encode(cFile &in, cFile &out, ...);

    bool decode(cFile &in, cFile &out, ...); ///< Runs the chain backwards, as encode()

private:
    bool Code(cFile &in, cFile &out, int step, int start, bool (iCodec::*method)(cFile &, cFile &, ...));

    StringVector m_codecs; // in encoding order
};

} // namespace Qel
