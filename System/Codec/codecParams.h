#pragma once

namespace Qel {

/// What a codec can be told for one job. Empty: each codec with something to tell has its own.
class CodecParams {};

/// The compression level for cCodecZIP.
class CodecParamsZip : public CodecParams {
public:
    CodecParamsZip(unsigned char l) : level(l) {}

    unsigned char level; ///< 0 stores, 1 is the fastest, 9 the smallest
};

} // namespace Qel
