#pragma once

#include <cstdint>
#include <vector>

namespace Qel {
class iSoundSource;
struct sSoundParams;
} // namespace Qel

/// Samples of 16 bits, interleaved. Six channels are left, right, centre, subwoofer, rear left, rear right.
struct Pcm {
    unsigned int channels = 0;
    unsigned int rate = 0; ///< Hz
    std::vector<std::int16_t> samples;

    unsigned int bytes() const { return static_cast<unsigned int>(samples.size() * sizeof(std::int16_t)); }
};

/// Lets samples of one channel that are for single speakers have six, silent but for those, and silences the
/// groups of speakers that are off in samples of six.
void toSpeakers(Pcm &pcm, Qel::sSoundParams const &params);

/// Decodes what a source's data are: a WAV file of any coding that libsndfile reads, or the samples of 16
/// bits that such a file's head has been taken off from. Then as toSpeakers().
/// @return false if it cannot be read, has no sample or would take more than 256 MiB
bool decode(Qel::iSoundSource &source, Pcm &pcm);
