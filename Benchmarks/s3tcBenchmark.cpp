// Block compression beside stb_dxt and libavcodec's reader of DDS files, and beside its own plain level.

#include "Support/OS/processorLevel.h"
#include "System/Graphics/image/s3tc.h"

#include <benchmark/benchmark.h>

extern "C" {
#include <libavcodec/avcodec.h>
}

#define STB_DXT_IMPLEMENTATION
#include <stb/stb_dxt.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

namespace {

using namespace Qel;

constexpr unsigned int side = 512;
constexpr std::size_t numPixels = std::size_t{side} * side;
constexpr std::size_t numBlocks = numPixels / 16;

using Pixels = std::vector<unsigned int>;
using Bytes = std::vector<unsigned char>;

/// Argument 0: smooth colours with edges and grain, alpha that fades. Argument 1: the same under noise that
/// reaches over two thirds of the range, in alpha, too.
Pixels makeImage(std::int64_t kind)
{
    std::mt19937 random(5);
    int const grain = kind == 0 ? 6 : 90;
    Pixels pixels(numPixels);
    for (unsigned int y = 0; y < side; ++y) {
        for (unsigned int x = 0; x < side; ++x) {
            bool const inside = std::hypot(x % 128 - 64.0, y % 128 - 64.0) < 45;
            unsigned int word = 0;
            for (unsigned int c = 0; c < 4; ++c) {
                double const wave = std::sin(x * 0.011 * (c + 1) + y * 0.017) + (inside ? 0.6 : -0.3);
                int const noise = static_cast<int>(random() % static_cast<unsigned int>(2 * grain)) - grain;
                int const value = static_cast<int>(120 + 70 * wave) + noise / (c == 3 && kind == 0 ? 3 : 1);
                word |= static_cast<unsigned int>(std::clamp(value, 0, 255)) << 8 * c;
            }
            pixels[std::size_t{y} * side + x] = word;
        }
    }
    return pixels;
}

void countPixels(benchmark::State &state)
{
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(numPixels));
}

using Encoder = unsigned int (cS3TC::*)(void *, void const *, unsigned int, unsigned int, unsigned int);
using Decoder = void (cS3TC::*)(unsigned int *, unsigned short const *, unsigned int, unsigned int);

void encode(benchmark::State &state, Encoder encoder, os::eProcessorLevel level)
{
    os::eProcessorLevel const before = os::processorLevel();
    if (!os::setProcessorLevel(level)) {
        state.SkipWithError("this processor does not have the level");
        return;
    }
    Pixels const pixels = makeImage(state.range(0));
    Bytes blocks(numBlocks * 16);
    cS3TC coder;
    for (auto _ : state) {
        benchmark::DoNotOptimize((coder.*encoder)(blocks.data(), pixels.data(), side * 4, side, side));
        benchmark::ClobberMemory();
    }
    countPixels(state);
    os::setProcessorLevel(before);
}

void encodeStb(benchmark::State &state, bool hasAlpha)
{
    Pixels const pixels = makeImage(state.range(0));
    Bytes blocks(numBlocks * 16);
    std::size_t const stride = hasAlpha ? 16 : 8;
    for (auto _ : state) {
        unsigned char *to = blocks.data();
        for (std::size_t y = 0; y < side; y += 4) {
            for (std::size_t x = 0; x < side; x += 4, to += stride) {
                unsigned int block[16];
                for (std::size_t row = 0; row < 4; ++row) {
                    std::memcpy(block + 4 * row, &pixels[(y + row) * side + x], 16);
                }
                stb_compress_dxt_block(to, reinterpret_cast<unsigned char const *>(block), hasAlpha,
                                       STB_DXT_NORMAL);
            }
        }
        benchmark::ClobberMemory();
    }
    countPixels(state);
}

Bytes makeBlocks(Encoder encoder)
{
    Bytes blocks(numBlocks * (encoder == &cS3TC::to_S3TC1 ? 8 : 16));
    cS3TC coder;
    (coder.*encoder)(blocks.data(), makeImage(0).data(), side * 4, side, side);
    return blocks;
}

void decode(benchmark::State &state, Encoder encoder, Decoder decoder, os::eProcessorLevel level)
{
    os::eProcessorLevel const before = os::processorLevel();
    Bytes const blocks = makeBlocks(encoder);
    if (!os::setProcessorLevel(level)) {
        state.SkipWithError("this processor does not have the level");
        return;
    }
    Pixels pixels(numPixels);
    cS3TC coder;
    for (auto _ : state) {
        (coder.*decoder)(pixels.data(), reinterpret_cast<unsigned short const *>(blocks.data()), side, side);
        benchmark::ClobberMemory();
    }
    countPixels(state);
    os::setProcessorLevel(before);
}

void decodeLibavcodec(benchmark::State &state, Encoder encoder, char const *fourCC)
{
    Bytes const blocks = makeBlocks(encoder);
    std::uint32_t header[32] = {};
    std::memcpy(header, "DDS ", 4);
    header[1] = 124;
    header[2] = 0x81007; // caps, height, width, pixel format, linear size
    header[3] = side;
    header[4] = side;
    header[5] = static_cast<std::uint32_t>(blocks.size());
    header[19] = 32;
    header[20] = 4; // a code of four letters
    std::memcpy(header + 21, fourCC, 4);
    header[27] = 0x1000; // a texture

    AVCodecContext *context = avcodec_alloc_context3(avcodec_find_decoder(AV_CODEC_ID_DDS));
    context->thread_count = 1;
    AVPacket *packet = av_packet_alloc();
    AVFrame *frame = av_frame_alloc();
    if (avcodec_open2(context, context->codec, nullptr) < 0 ||
        av_new_packet(packet, static_cast<int>(sizeof header + blocks.size())) < 0) {
        state.SkipWithError("no decoder");
        return;
    }
    std::memcpy(packet->data, header, sizeof header);
    std::memcpy(packet->data + sizeof header, blocks.data(), blocks.size());
    for (auto _ : state) {
        if (avcodec_send_packet(context, packet) < 0 || avcodec_receive_frame(context, frame) < 0) {
            state.SkipWithError("not decoded");
            break;
        }
        benchmark::DoNotOptimize(frame->data[0]);
        av_frame_unref(frame);
    }
    countPixels(state);
    av_frame_free(&frame);
    av_packet_free(&packet);
    avcodec_free_context(&context);
}

// What the memory allows: as many bytes written as a decoder writes.
void BM_memcpy(benchmark::State &state)
{
    Pixels const from = makeImage(0);
    Pixels to(numPixels);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), numPixels * 4);
        benchmark::ClobberMemory();
    }
    countPixels(state);
}
BENCHMARK(BM_memcpy);

#define QEL_LEVELS(register, ...)                                                                            \
    register(__VA_ARGS__, plain, os::PROCESSOR_PLAIN);                                                       \
    register(__VA_ARGS__, sse42, os::PROCESSOR_SSE42);                                                       \
    register(__VA_ARGS__, avx2, os::PROCESSOR_AVX2);                                                         \
    register(__VA_ARGS__, avx512, os::PROCESSOR_AVX512)

#define QEL_ENCODE(form, encoder, name, level)                                                               \
    BENCHMARK_CAPTURE(encode, form##_##name, encoder, level)->Arg(0)->Arg(1)

#define QEL_DECODE(form, encoder, decoder, name, level)                                                      \
    BENCHMARK_CAPTURE(decode, form##_##name, encoder, decoder, level)

BENCHMARK_CAPTURE(encodeStb, DXT1, false)->Arg(0)->Arg(1);
QEL_LEVELS(QEL_ENCODE, DXT1, &cS3TC::to_S3TC1);
QEL_LEVELS(QEL_ENCODE, DXT1a, &cS3TC::to_S3TC1a);
BENCHMARK_CAPTURE(encodeStb, DXT5, true)->Arg(0)->Arg(1);
QEL_LEVELS(QEL_ENCODE, DXT3, &cS3TC::to_S3TC2or3);
QEL_LEVELS(QEL_ENCODE, DXT5, &cS3TC::to_S3TC4or5);
BENCHMARK_CAPTURE(decodeLibavcodec, DXT1, &cS3TC::to_S3TC1, "DXT1");
QEL_LEVELS(QEL_DECODE, DXT1, &cS3TC::to_S3TC1, &cS3TC::from_S3TC1);
BENCHMARK_CAPTURE(decodeLibavcodec, DXT3, &cS3TC::to_S3TC2or3, "DXT3");
QEL_LEVELS(QEL_DECODE, DXT3, &cS3TC::to_S3TC2or3, &cS3TC::from_S3TC2or3);
BENCHMARK_CAPTURE(decodeLibavcodec, DXT5, &cS3TC::to_S3TC4or5, "DXT5");
QEL_LEVELS(QEL_DECODE, DXT5, &cS3TC::to_S3TC4or5, &cS3TC::from_S3TC4or5);

} // namespace
