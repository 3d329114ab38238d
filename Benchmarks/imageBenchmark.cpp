#include "System/Graphics/image/image.h"
#include "Tests/Graphics/image/plainImage.h"

#include <benchmark/benchmark.h>
#include <libyuv.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

// Bytes named by their order in memory at the peer ("ARGB" is blue, green, red, alpha), by the highest bit
// down here: A8R8G8B8 is its ARGB, A8B8G8R8 its ABGR, R8G8B8 its RGB24, B8G8R8 its RAW.
namespace {

using namespace Qel;

constexpr unsigned short side = 64; // 16 KiB at 32 bits: what counts is the loop, not the memory
constexpr std::int64_t pixels = std::int64_t{side} * side;

cImage noise(ePixelFormat format, unsigned short size = side)
{
    cImage image;
    image.setCanvas(format, size, size, nullptr);
    std::mt19937 random(1);
    for (unsigned i = 0; i < unsigned{size} * size; ++i) {
        image.setPixel(i % size, i / size, Color(static_cast<std::uint32_t>(random())));
    }
    return image;
}

void convert(benchmark::State &state, ePixelFormat to, ePixelFormat from)
{
    cImage source = noise(from);
    cImage target = noise(to);
    for (auto _ : state) {
        cPixelFormat::convertStream(to, target.getData(), target.getBytesPerPixel() * pixels, from,
                                    source.getData(), source.getBytesPerPixel() * pixels);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * pixels);
}

using Peer = int (*)(std::uint8_t const *, int, std::uint8_t *, int, int, int);

void convertPeer(benchmark::State &state, Peer peer, int toBytes, int fromBytes)
{
    cImage const image = noise(A8R8G8B8);
    std::vector<std::uint8_t> const source(image.getData(), image.getData() + 4 * pixels);
    std::vector<std::uint8_t> target(4 * pixels);
    for (auto _ : state) {
        peer(source.data(), fromBytes * side, target.data(), toBytes * side, side, side);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * pixels);
}

#define QEL_PAIR(name, to, from, peer, toBytes, fromBytes)                                                   \
    BENCHMARK_CAPTURE(convert, name, to, from)->Name("BM_convertStream/" #name);                             \
    BENCHMARK_CAPTURE(convertPeer, name, peer, toBytes, fromBytes)->Name("BM_convertStream/" #name "/libyuv")

QEL_PAIR(32_to_565, R5G6B5, A8R8G8B8, libyuv::ARGBToRGB565, 2, 4);
QEL_PAIR(565_to_32, A8R8G8B8, R5G6B5, libyuv::RGB565ToARGB, 4, 2);
QEL_PAIR(32_to_1555, A1R5G5B5, A8R8G8B8, libyuv::ARGBToARGB1555, 2, 4);
QEL_PAIR(1555_to_32, A8R8G8B8, A1R5G5B5, libyuv::ARGB1555ToARGB, 4, 2);
QEL_PAIR(32_to_24, R8G8B8, A8R8G8B8, libyuv::ARGBToRGB24, 3, 4);
QEL_PAIR(24_to_32, A8R8G8B8, R8G8B8, libyuv::RGB24ToARGB, 4, 3);
QEL_PAIR(32_to_24_turned, B8G8R8, A8R8G8B8, libyuv::ARGBToRAW, 3, 4);
QEL_PAIR(24_to_32_turned, A8R8G8B8, B8G8R8, libyuv::RAWToARGB, 4, 3);
QEL_PAIR(32_turned, A8B8G8R8, A8R8G8B8, libyuv::ARGBToABGR, 4, 4);
QEL_PAIR(24_turned, B8G8R8, R8G8B8, libyuv::RAWToRGB24, 3, 3);

// All pairs of the formats with masks, by their numbers.
[[maybe_unused]] bool const everyPair = [] {
    for (unsigned from = 0; from < PAL8; ++from) {
        for (unsigned to = 0; to < PAL8; ++to) {
            benchmark::RegisterBenchmark(
                ("BM_everyPair/" + std::to_string(from) + "_to_" + std::to_string(to)).c_str(), convert,
                static_cast<ePixelFormat>(to), static_cast<ePixelFormat>(from));
        }
    }
    return true;
}();

template <class Edit>
void edit(benchmark::State &state, ePixelFormat format, Edit work)
{
    cImage image = noise(format);
    for (auto _ : state) {
        work(image);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * pixels);
}

short const bell[5][5] = {
    {0, 1, 2, 1, 0}, {1, 3, 10, 3, 1}, {2, 10, 90, 10, 2}, {1, 3, 10, 3, 1}, {0, 1, 2, 1, 0}};

#define QEL_EDIT(name, format, ours, plainly)                                                                \
    BENCHMARK_CAPTURE(edit, name, format, [](cImage &image) { ours; })->Name("BM_" #name "/" #format);       \
    BENCHMARK_CAPTURE(edit, name, format, [](cImage &image) {                                                \
        plainly;                                                                                             \
    })->Name("BM_" #name "/" #format "/plain")

QEL_EDIT(filter, A8R8G8B8, image.applyFilter(IMAGEFILTER_BLUR), plain::filter(image, bell));
QEL_EDIT(filter, R5G6B5, image.applyFilter(IMAGEFILTER_BLUR), plain::filter(image, bell));
QEL_EDIT(average, A8R8G8B8, image.applyFilter(IMAGEFILTER_AVERAGE), plain::filter(image, bell));
QEL_EDIT(gray, A8R8G8B8, image.applyAction(IMAGECOMMAND_GRAYSCALE), plain::grayscale(image));
QEL_EDIT(gray, R8G8B8, image.applyAction(IMAGECOMMAND_GRAYSCALE), plain::grayscale(image));
QEL_EDIT(gray, R5G6B5, image.applyAction(IMAGECOMMAND_GRAYSCALE), plain::grayscale(image));
QEL_EDIT(mirrorHorizontal, A8R8G8B8, image.mirrorHorizontal(), plain::mirrorHorizontal(image));
QEL_EDIT(mirrorHorizontal, R8G8B8, image.mirrorHorizontal(), plain::mirrorHorizontal(image));
QEL_EDIT(mirrorHorizontal, R5G6B5, image.mirrorHorizontal(), plain::mirrorHorizontal(image));
QEL_EDIT(mirrorVertical, R8G8B8, image.mirrorVertical(), plain::mirrorVertical(image));
QEL_EDIT(bumpmap, A8R8G8B8, cImage map; image.bumpmap(map, 0), cImage map; plain::bumpmap(image, map, 0));
QEL_EDIT(bumpmap, R5G6B5, cImage map; image.bumpmap(map, 1), cImage map; plain::bumpmap(image, map, 1));

} // namespace
