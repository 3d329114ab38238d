#pragma once

#include <cstdint>
#include <vector>

namespace Qel {
class iSoundSource;
}

/// Samples of 16 bits, interleaved. Six channels are left, right, centre, subwoofer, rear left, rear right.
struct Pcm {
    unsigned int channels = 0;
    unsigned int rate = 0; ///< Hz
    std::vector<std::int16_t> samples;

    unsigned int bytes() const { return static_cast<unsigned int>(samples.size() * sizeof(std::int16_t)); }
};

/// Decodes what a source's data are: a WAV file of any coding that libsndfile reads, or the samples of 16
/// bits that such a file's head has been taken off from.
///
/// A source of one channel that is for single speakers gets six, silent but for those, and speaker groups
/// that are off are silent.
/// @return false if it cannot be read, has no sample or would take more than 256 MiB
bool decode(Qel::iSoundSource &source, Pcm &pcm);
