#include "Support/OS/processorLevel.h"
#include "System/Sound/soundVorbis.h"
#include "Tests/Fuzz/fuzzTarget.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

namespace {

// By the rule, in double arithmetic rounded once: 24 bits by 15 are exact there.
short byTheRule(float sample)
{
    if (std::isnan(sample)) {
        return 0;
    }
    return sample >= 1    ? short{32767}
           : sample <= -1 ? short{-32768}
                          : static_cast<short>(static_cast<float>(static_cast<double>(sample) * 32767.0));
}

} // namespace

// Any floats, as one plane at several strides, as two planes and as six, some of them silent, at every level.
// The first byte says which are silent.
std::string fuzzTarget(unsigned char const *data, std::size_t size)
{
    using Qel::iSoundVorbis;
    constexpr short untouched = 4711;
    if (size == 0) {
        return {};
    }
    std::vector<float> in((size - 1) / sizeof(float));
    if (!in.empty()) {
        std::memcpy(in.data(), data + 1, in.size() * sizeof(float));
    }
    os::eProcessorLevel const before = os::processorLevel();
    for (unsigned int level = 0; level <= os::processorLevelMax(); ++level) {
        os::setProcessorLevel(static_cast<os::eProcessorLevel>(level));
        for (unsigned int const stride : {1u, 2u, 3u, 6u}) {
            // The block ends with the last sample: what writes behind it is seen.
            std::vector<short> out(in.empty() ? 0 : (in.size() - 1) * stride + 1, untouched);
            iSoundVorbis::transform_float_I16(in.data(), out.data(), static_cast<unsigned int>(in.size()),
                                              stride);
            for (std::size_t i = 0; i < out.size(); ++i) {
                fuzzRequire(out[i] == (i % stride == 0 ? byTheRule(in[i / stride]) : untouched),
                            "each sample by the rule, and nothing between");
            }
        }
        for (unsigned int const planes : {2u, 6u}) {
            std::size_t const count = in.size() / planes;
            std::vector<short> out(count * planes);
            float const *plane[6] = {};
            for (unsigned int k = 0; k < planes; ++k) {
                bool const isSilent = planes == 6 && (data[0] >> k & 1) != 0;
                plane[k] = isSilent ? nullptr : in.data() + k * count;
            }
            if (planes == 2) {
                iSoundVorbis::transformStereo(plane[0], plane[1], out.data(),
                                              static_cast<unsigned int>(count));
            } else {
                iSoundVorbis::transformSix(plane, out.data(), static_cast<unsigned int>(count));
            }
            for (std::size_t i = 0; i < out.size(); ++i) {
                float const *const from = plane[i % planes];
                fuzzRequire(out[i] == (from == nullptr ? 0 : byTheRule(from[i / planes])),
                            "planes lie side by side");
            }
        }
    }
    os::setProcessorLevel(before);
    return {};
}
