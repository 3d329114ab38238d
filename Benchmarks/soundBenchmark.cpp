#include "Benchmarks/allocationCounter.h"
#include "System/Sound/ringBufferByte.h"
#include "System/Sound/soundVorbis.h"
#include "Tests/Sound/soundBytes.h"

#include "System/System/logManager.h"

#include <benchmark/benchmark.h>
#include <vorbis/vorbisfile.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <memory>
#include <random>
#include <vector>

namespace {

using namespace Qel;
using benchmark::State;

std::vector<float> samples(std::size_t count)
{
    std::mt19937 random(3);
    std::uniform_real_distribution<float> level(-1.1f, 1.1f);
    std::vector<float> out(count);
    std::generate(out.begin(), out.end(), [&] { return level(random); });
    return out;
}

constexpr unsigned int frames = 4096;

void BM_iSoundVorbis_convert(State &state)
{
    std::vector<float> const in = samples(frames);
    std::vector<short> out(std::size_t{frames} * 6);
    auto const stride = static_cast<unsigned int>(state.range(0));
    for (auto _ : state) {
        iSoundVorbis::transform_float_I16(in.data(), out.data(), frames, stride);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * frames);
}
BENCHMARK(BM_iSoundVorbis_convert)->Arg(1)->Arg(2)->Arg(6);

// The peer: a sample at a time, as the rule reads.
void BM_plain_convert(State &state)
{
    std::vector<float> const in = samples(frames);
    std::vector<short> out(std::size_t{frames} * 6);
    auto const stride = static_cast<unsigned int>(state.range(0));
    for (auto _ : state) {
        short *to = out.data();
        for (float const sample : in) {
            *to = sample >= 1.0f    ? short{32767}
                  : sample <= -1.0f ? short{-32768}
                                    : static_cast<short>(sample * 32767);
            to += stride;
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * frames);
}
BENCHMARK(BM_plain_convert)->Arg(1)->Arg(2)->Arg(6);

// Whole frames of 2 or 6 planes, side by side.
void BM_iSoundVorbis_convertFrames(State &state)
{
    std::vector<float> const in = samples(frames);
    auto const count = static_cast<std::size_t>(state.range(0));
    std::vector<short> out(frames * count);
    float const *const planes[6] = {in.data(), in.data(), in.data(), in.data(), in.data(), in.data()};
    for (auto _ : state) {
        if (count == 2) {
            iSoundVorbis::transformStereo(planes[0], planes[1], out.data(), frames);
        } else {
            iSoundVorbis::transformSix(planes, out.data(), frames);
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * frames * state.range(0));
}
BENCHMARK(BM_iSoundVorbis_convertFrames)->Arg(2)->Arg(6);

// The peer: plane by plane as before.
void BM_plain_convertFrames(State &state)
{
    std::vector<float> const in = samples(frames);
    auto const count = static_cast<std::size_t>(state.range(0));
    std::vector<short> out(frames * count);
    for (auto _ : state) {
        for (std::size_t k = 0; k < count; ++k) {
            for (std::size_t i = 0; i < frames; ++i) {
                float const sample = in[i];
                out[i * count + k] = sample >= 1.0f    ? short{32767}
                                     : sample <= -1.0f ? short{-32768}
                                                       : static_cast<short>(sample * 32767);
            }
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * frames * state.range(0));
}
BENCHMARK(BM_plain_convertFrames)->Arg(2)->Arg(6);

// A file from memory to its end, with all that a voice asks for.
void BM_iSoundVorbis_stream(State &state)
{
    test::Bytes bytes = test::soundFile("long.ogg");
    std::int64_t done = 0;
    for (auto _ : state) {
        test::TestChannel channel(1, nullptr);
        iSoundSource source;
        source.setData(bytes.data(), static_cast<unsigned int>(bytes.size()));
        iSoundVorbis stream(nullptr);
        stream.open(&source, &channel);
        while (unsigned int const got = stream.stream(1, 24576)) {
            done += got / 2;
        }
    }
    state.SetItemsProcessed(done);
}
BENCHMARK(BM_iSoundVorbis_stream);

struct Image {
    test::Bytes const &bytes;
    std::size_t at = 0;
};

// The peer: the decoder alone.
void BM_ov_read_float(State &state)
{
    test::Bytes const bytes = test::soundFile("long.ogg");
    std::int64_t done = 0;
    for (auto _ : state) {
        Image image{bytes};
        ov_callbacks const callbacks{
            [](void *to, std::size_t size, std::size_t count, void *from) {
                auto &source = *static_cast<Image *>(from);
                std::size_t const n = std::min(size * count, source.bytes.size() - source.at);
                std::memcpy(to, source.bytes.data() + source.at, n);
                source.at += n;
                return n;
            },
            [](void *from, ogg_int64_t offset, int whence) {
                auto &source = *static_cast<Image *>(from);
                std::int64_t const base = whence == SEEK_SET ? 0
                                          : whence == SEEK_CUR
                                              ? static_cast<std::int64_t>(source.at)
                                              : static_cast<std::int64_t>(source.bytes.size());
                source.at = static_cast<std::size_t>(base + offset);
                return 0;
            },
            nullptr, [](void *from) { return static_cast<long>(static_cast<Image *>(from)->at); }};
        OggVorbis_File file;
        ov_open_callbacks(&image, &file, nullptr, 0, callbacks);
        float **planes = nullptr;
        int section = 0;
        while (long const got = ov_read_float(&file, &planes, 8192, &section)) {
            done += got;
        }
        ov_clear(&file);
    }
    state.SetItemsProcessed(done);
}
BENCHMARK(BM_ov_read_float);

// A block in and out again.
void BM_RingBufferByte_pass(State &state)
{
    RingBufferByte ring;
    ring.init(1 << 16);
    std::vector<unsigned char> block(static_cast<std::size_t>(state.range(0)));
    int const size = static_cast<int>(block.size());
    for (auto _ : state) {
        benchmark::DoNotOptimize(ring.write(block.data(), size));
        benchmark::DoNotOptimize(ring.read(block.data(), size));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_RingBufferByte_pass)->Arg(64)->Arg(4096);

void BM_memcpy_pass(State &state)
{
    std::vector<unsigned char> block(static_cast<std::size_t>(state.range(0)));
    std::vector<unsigned char> other(block.size());
    for (auto _ : state) {
        std::memcpy(other.data(), block.data(), block.size());
        benchmark::ClobberMemory();
        std::memcpy(block.data(), other.data(), block.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_memcpy_pass)->Arg(64)->Arg(4096);

// A system with so many 3D sounds playing.
struct Playing {
    explicit Playing(unsigned int count)
    {
        system.start(count, 4, 2);
        for (unsigned int i = 0; i < count; ++i) {
            sounds.emplace_back(i + 1).at(100, 14);
            system.play(sounds.back());
        }
    }

    std::deque<test::Sound> sounds;
    test::TestSound system;
};

void BM_iSoundSystem_update(State &state)
{
    Playing playing(static_cast<unsigned int>(state.range(0)));
    AllocationCounter const counter;
    for (auto _ : state) {
        playing.system.update(0.016f);
    }
    state.counters["allocations"] = static_cast<double>(counter.count());
    state.counters["voices"] = playing.system.getNumPlayingChannels();
}
BENCHMARK(BM_iSoundSystem_update)->Arg(10)->Arg(50)->Arg(200);

// So many sources are known, and all of them asked for each round; 50 voices are there.
void BM_iSoundSystem_playMany(State &state)
{
    test::TestSound system;
    std::deque<test::Sound> sounds;
    system.start(50, 4, 2);
    for (unsigned int i = 0; i < state.range(0); ++i) {
        sounds.emplace_back(i + 1).at(static_cast<float>(1 + i % 20), i % 15);
    }
    std::size_t played = 0;
    for (auto _ : state) {
        for (test::Sound &sound : sounds) {
            played += system.play(sound);
        }
        system.update(0.016f);
        for (test::Sound &sound : sounds) {
            system.stop(sound, 0);
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.counters["playedOfARound"] = static_cast<double>(played) / static_cast<double>(state.iterations());
}
BENCHMARK(BM_iSoundSystem_playMany)->Arg(10)->Arg(100)->Arg(1000);

// Start to finish of a sound that robs one of 50, and of the robbed one's fade.
void BM_iSoundSystem_playRobs(State &state)
{
    Playing playing(50);
    std::deque<test::Sound> sounds;
    for (unsigned int i = 0; i < 64; ++i) {
        sounds.emplace_back(1000 + i).at(1, 7);
    }
    std::size_t next = 0;
    std::size_t failed = 0;
    for (auto _ : state) {
        test::Sound &sound = sounds[next++ % sounds.size()];
        failed += !playing.system.play(sound);
        for (iSoundChannel *const channel : playing.system.crossfadeChannels) {
            if (channel->isFadingDown()) {
                playing.system.stopChannel(channel->getIndex(), 0);
            }
        }
        playing.system.stop(sound, 0);
        playing.system.play(playing.sounds[next % 50]); // another takes the voice
    }
    state.counters["failed"] = static_cast<double>(failed);
}
BENCHMARK(BM_iSoundSystem_playRobs);

} // namespace
