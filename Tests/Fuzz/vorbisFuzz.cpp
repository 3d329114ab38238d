#include "System/Sound/soundChannel.h"
#include "System/Sound/soundSource.h"
#include "System/Sound/soundVorbis.h"
#include "Tests/Fuzz/fuzzTarget.h"

#include <cstdint>
#include <vector>

// The decoder's library loses a list of 8 bytes for each damaged head; what is ours is still looked at.
extern "C" __attribute__((visibility("default"))) char const *__lsan_default_suppressions();

extern "C" char const *__lsan_default_suppressions()
{
    return "leak:libvorbisfile";
}

namespace {

// Sums up what a stream hands over.
class Listener : public Qel::iSoundChannel {
public:
    Listener() : iSoundChannel(1, nullptr) {}

    unsigned int update(float) override { return 15; } // all segments again, always
    bool fillBuffer(unsigned int, unsigned char const *data, unsigned int size) override
    {
        constexpr std::uint64_t prime = 1099511628211u; // of FNV-1a
        for (unsigned int i = 0; i < size; ++i) {
            sum = (sum ^ data[i]) * prime;
        }
        bytes += size;
        return true;
    }

    std::uint64_t sum = 14695981039346656037u;
    std::uint64_t bytes = 0;
};

} // namespace

// The first byte is the count of loops, the second the time to begin at in steps of 16 ms; the rest is a
// file.
std::string fuzzTarget(unsigned char const *data, std::size_t size)
{
    if (size < 2) {
        return {};
    }
    std::vector<unsigned char> image(data + 2, data + size);
    Listener channel;
    Qel::iSoundSource source;
    source.setPlayOnPause();
    source.setData(image.data(), static_cast<unsigned int>(image.size()));
    source.getSoundParams().loopCount = source.getSoundParams().currentLoop = data[0] % 4;
    source.setCurrentTimeMS(data[1] * 16u);
    Qel::iSoundVorbis stream(nullptr);
    if (!stream.open(&source, &channel)) {
        fuzzRequire(!stream.isOpened(), "what fails is closed");
        return "-";
    }
    stream.play();
    for (int frame = 0; frame < 8 && !stream.isEOFReached(); ++frame) {
        stream.update(0.01f);
    }
    std::string const seen = std::to_string(channel.bytes) + ':' + std::to_string(channel.sum) + ':' +
                             std::to_string(source.getCurrentTimeMS()) + ':' +
                             std::to_string(source.getNumChannels());
    stream.close();
    return seen;
}
