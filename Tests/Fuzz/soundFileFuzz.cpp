#include "System/Sound/soundSource.h"
#include "System/Sound/soundVorbis.h"
#include "Tests/Fuzz/fuzzTarget.h"
#include "Tests/Tools/testSound.h"

#include <cstdint>
#include <vector>

// An image of a sound file, whatever it is: what a play would make of it, once more from where that left it,
// and what a stream reads in its head.
std::string fuzzTarget(unsigned char const *data, std::size_t size)
{
    std::vector<unsigned char> image(data, data + size);
    auto const bytes = static_cast<unsigned int>(size);
    test::TestSound sound;
    Qel::iSoundSource source;
    source.setData(image.data(), bytes);
    std::string seen;
    for (bool strip : {false, true, true}) {
        sound.checkSoundfile(&source, strip);
        unsigned int left = 0;
        unsigned char const *const at = source.getData(left);
        auto const offset = static_cast<std::size_t>(at - image.data());
        fuzzRequire(offset + left <= size, "the payload lies inside the data");
        seen += std::to_string(offset) + '+' + std::to_string(left) + ':' +
                std::to_string(source.getNumChannels()) + ',' + std::to_string(source.getSamplerate()) +
                (source.hasWAVHeader() ? 'w' : '-') + (source.isADPCMCompressed() ? 'a' : '-') +
                (source.hasOGGHeader() ? 'o' : '-');
    }
    Qel::iSoundVorbis stream(nullptr);
    bool const isWav = stream.checkHeaderWAV(image.data(), bytes, "fuzz");
    fuzzRequire(!isWav || stream.getBytePosition() <= size, "the payload begins inside the data");
    return seen + std::to_string(isWav) + std::to_string(stream.getBytePosition());
}
