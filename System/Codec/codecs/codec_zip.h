#pragma once

#include "System/Codec/codecFactory.h"
#include "System/Codec/codecParams.h"
#include "System/System/export.h"

namespace Qel {

class cFileMem;

/// "CODEC_ZIP": zlib on memory streams, with no copy between.
///
/// The plain form is the uncompressed size in 4 bytes and a zlib stream that reaches to the end. The extended
/// form has the compressed size in 4 more bytes in front of the zlib stream, so that blocks can follow one
/// another and other data.
///
/// @code
/// cCodecZIP zip;
/// cFileMem packed;
/// zip.encodeEx(first, packed, 9);
/// zip.encodeEx(second, packed, 9);
/// packed.seek(0);
/// zip.decodeEx(packed, first);
/// zip.decodeEx(packed, second);
/// @endcode
///
/// Both files must be memory streams and not the same one; encode(), encodeEx() and the decode() of any
/// cFile throw an Exception with number 0 if one is none. Failures are logged and give false: the position of
/// the output is then where it was, and its size grown by the room that was needed, filled with zeros.
/// On success the output ends where the new bytes do.
///
/// @par Limits   Decoding takes 64 MiB or more of uncompressed bytes for damage. Encoding takes less than 4
/// GiB.
/// @par Threads  The object has no state: any number of threads, each with its own streams.
class QEL_API cCodecZIP : public iCodec {
public:
    bool encode(cFile &in, cFile &out, ...) override;            ///< The plain form at level 5
    bool encode(cFile &in, cFile &out, CodecParamsZip params);   ///< The plain form
    bool encodeEx(cFile &in, cFile &out, CodecParamsZip params); ///< The extended form
    bool decode(cFile &in, cFile &out, ...) override;            ///< The plain form
    bool decode(cFileMem &in, cFileMem &out);                    ///< The plain form. @p in ends at its end
    bool decodeEx(cFileMem &in, cFileMem &out);                  ///< One block. @p in ends behind it

    /// Reads the size in front of either form without moving on.
    /// @return 0 if there are not 4 bytes or they say 64 MiB or more, which is logged
    unsigned int getUncompressedSize(cFile &in) const;

private:
    bool _encode(cFile &in, cFile &out, int level);
};

/// Makes cCodecZIP.
class QEL_API CodecZipFactory : public CodecFactory {
public:
    String getType() const override;
    iCodec *createInstance(String const &name) override;
};

} // namespace Qel
