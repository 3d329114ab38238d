#include "plainEncoders.h"

#include "System/Codec/codecs/codec_huffman.h"
#include "System/Codec/codecs/codec_lz77.h"
#include "System/Codec/codecs/codec_lzw.h"
#include "System/Codec/codecs/codec_mtf.h"
#include "System/Codec/codecs/codec_zip.h"
#include "System/File/fileMem.h"
#include "Tests/Codec/plainDecoders.h"
#include "Tests/Codec/testData.h"

#include <benchmark/benchmark.h>
#include <libdeflate.h>
#include <tiffio.h>
#include <zlib.h>
// The switch that says how literals are coded counts as experimental.
#define ZSTD_STATIC_LINKING_ONLY
#include <zstd.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace Qel;
using benchmark::State;

constexpr std::size_t dataSize = 4 * 1024 * 1024;

// Text in words of unequal frequency; and records of small numbers, floats and repeated blocks, as meshes and
// images are.
std::string const &dataOf(State const &state)
{
    static std::string const text = test::makeData("text", dataSize, 7);
    static std::string const binary = [] {
        std::string data;
        std::uint32_t x = 11;
        float angle = 0;
        while (data.size() < dataSize) {
            x = x * 1'664'525u + 1'013'904'223u;
            angle += static_cast<float>(x >> 24) / 256.0f;
            float const point[3] = {angle, angle * 0.5f, 1.0f};
            data.append(reinterpret_cast<char const *>(point), sizeof(point));
            auto const index = static_cast<std::uint16_t>(x >> 26);
            data.append(reinterpret_cast<char const *>(&index), sizeof(index));
            data.append(2, static_cast<char>(x >> 29));
        }
        data.resize(dataSize);
        return data;
    }();
    return state.range(0) == 0 ? text : binary;
}

void finish(State &state, std::size_t packed)
{
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * dataSize));
    state.counters["ratio"] = static_cast<double>(packed) / static_cast<double>(dataSize);
    state.SetLabel(state.range(0) == 0 ? "text" : "binary");
}

template <class Codec>
void BM_encode(State &state)
{
    Codec codec;
    cFileMem in;
    cFileMem out;
    test::fill(in, dataOf(state));
    for (auto _ : state) {
        in.seek(0);
        out.clear();
        codec.encode(in, out);
    }
    finish(state, out.size());
}

template <class Codec>
void BM_decode(State &state)
{
    Codec codec;
    cFileMem in;
    cFileMem out;
    test::fill(in, test::encoded(codec, dataOf(state)));
    for (auto _ : state) {
        in.seek(0);
        out.clear();
        codec.decode(in, out);
    }
    finish(state, in.size());
}

void BM_plain(State &state, std::string (*method)(std::string const &),
              std::string (*before)(std::string const &))
{
    std::string const data = before != nullptr ? before(dataOf(state)) : dataOf(state);
    std::size_t size = 0;
    for (auto _ : state) {
        size = method(data).size();
    }
    finish(state, before != nullptr ? data.size() : size);
}

Bytef const *bytesOf(std::string const &data)
{
    return reinterpret_cast<Bytef const *>(data.data());
}

std::string deflated(std::string const &data, int level, int strategy)
{
    z_stream stream{};
    deflateInit2(&stream, level, Z_DEFLATED, 15, 8, strategy);
    std::string packed(deflateBound(&stream, data.size()), '\0');
    stream.next_in = const_cast<Bytef *>(bytesOf(data));
    stream.avail_in = static_cast<uInt>(data.size());
    stream.next_out = reinterpret_cast<Bytef *>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

void BM_zlibHuffmanOnly(State &state)
{
    std::size_t size = 0;
    for (auto _ : state) {
        size = deflated(dataOf(state), 5, Z_HUFFMAN_ONLY).size();
    }
    finish(state, size);
}

// A target length of 1 and the fastest strategy with matches of 7 bytes at the least leave next to nothing
// but literals to code.
void BM_zstdLiterals(State &state)
{
    std::string const &data = dataOf(state);
    std::string packed(ZSTD_compressBound(data.size()), '\0');
    std::unique_ptr<ZSTD_CCtx, decltype(&ZSTD_freeCCtx)> const context(ZSTD_createCCtx(), &ZSTD_freeCCtx);
    ZSTD_CCtx_setParameter(context.get(), ZSTD_c_strategy, ZSTD_fast);
    ZSTD_CCtx_setParameter(context.get(), ZSTD_c_targetLength, 131'072);
    ZSTD_CCtx_setParameter(context.get(), ZSTD_c_windowLog, 10);
    ZSTD_CCtx_setParameter(context.get(), ZSTD_c_hashLog, 6);
    ZSTD_CCtx_setParameter(context.get(), ZSTD_c_minMatch, 7);
    ZSTD_CCtx_setParameter(context.get(), ZSTD_c_literalCompressionMode, ZSTD_ps_enable);
    std::size_t size = 0;
    for (auto _ : state) {
        size = ZSTD_compress2(context.get(), packed.data(), packed.size(), data.data(), data.size());
    }
    finish(state, size);
}

void decodeWithLibdeflate(State &state, std::string const &packed)
{
    std::string back(dataSize, '\0');
    std::unique_ptr<libdeflate_decompressor, decltype(&libdeflate_free_decompressor)> const decompressor(
        libdeflate_alloc_decompressor(), &libdeflate_free_decompressor);
    for (auto _ : state) {
        std::size_t size = 0;
        libdeflate_zlib_decompress(decompressor.get(), packed.data(), packed.size(), back.data(), back.size(),
                                   &size);
        if (size != dataSize) {
            state.SkipWithError("not decoded");
        }
    }
    finish(state, packed.size());
}

void BM_libdeflateHuffmanOnly(State &state)
{
    decodeWithLibdeflate(state, deflated(dataOf(state), 5, Z_HUFFMAN_ONLY));
}

void BM_libdeflateMatches(State &state)
{
    decodeWithLibdeflate(state, deflated(dataOf(state), 1, Z_DEFAULT_STRATEGY));
}

/// A TIFF file in memory, of one strip with LZW.
struct Tiff {
    std::string bytes;
    std::size_t at = 0;

    static tmsize_t read(thandle_t self, void *to, tmsize_t size)
    {
        Tiff &file = *static_cast<Tiff *>(self);
        std::size_t const some = std::min(static_cast<std::size_t>(size), file.bytes.size() - file.at);
        std::memcpy(to, file.bytes.data() + file.at, some);
        file.at += some;
        return static_cast<tmsize_t>(some);
    }
    static tmsize_t write(thandle_t self, void *from, tmsize_t size)
    {
        Tiff &file = *static_cast<Tiff *>(self);
        std::size_t const end = file.at + static_cast<std::size_t>(size);
        if (end > file.bytes.size()) {
            file.bytes.resize(end);
        }
        std::memcpy(file.bytes.data() + file.at, from, static_cast<std::size_t>(size));
        file.at = end;
        return size;
    }
    static toff_t seek(thandle_t self, toff_t offset, int whence)
    {
        Tiff &file = *static_cast<Tiff *>(self);
        file.at = whence == SEEK_SET   ? offset
                  : whence == SEEK_CUR ? file.at + offset
                                       : file.bytes.size() + offset;
        return file.at;
    }
    static int close(thandle_t) { return 0; }
    static toff_t size(thandle_t self) { return static_cast<Tiff *>(self)->bytes.size(); }

    TIFF *open(char const *mode)
    {
        at = 0;
        return TIFFClientOpen("memory", mode, this, read, write, seek, close, size, nullptr, nullptr);
    }
    void encode(std::string const &data)
    {
        constexpr std::uint32_t width = 4'096;
        bytes.clear();
        TIFF *const tiff = open("wm");
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(data.size()) / width);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
        TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_LZW);
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, static_cast<std::uint32_t>(data.size()) / width);
        TIFFWriteEncodedStrip(tiff, 0, const_cast<char *>(data.data()), static_cast<tmsize_t>(data.size()));
        TIFFClose(tiff);
    }
};

void BM_libtiffEncode(State &state)
{
    Tiff file;
    for (auto _ : state) {
        file.encode(dataOf(state));
    }
    finish(state, file.bytes.size());
}

void BM_libtiffDecode(State &state)
{
    Tiff file;
    file.encode(dataOf(state));
    std::string back(dataSize, '\0');
    for (auto _ : state) {
        TIFF *const tiff = file.open("rm");
        if (TIFFReadEncodedStrip(tiff, 0, back.data(), static_cast<tmsize_t>(dataSize)) !=
            static_cast<tmsize_t>(dataSize)) {
            state.SkipWithError("not decoded");
        }
        TIFFClose(tiff);
    }
    finish(state, file.bytes.size());
}

void BM_zlibCompress2(State &state)
{
    std::string const &data = dataOf(state);
    std::vector<Bytef> packed(compressBound(data.size()));
    uLongf size = 0;
    for (auto _ : state) {
        size = packed.size();
        compress2(packed.data(), &size, bytesOf(data), data.size(), 5);
    }
    finish(state, size);
}

void BM_zlibUncompress(State &state)
{
    std::string const packed = deflated(dataOf(state), 5, Z_DEFAULT_STRATEGY);
    std::vector<Bytef> back(dataSize);
    for (auto _ : state) {
        uLongf size = back.size();
        uncompress(back.data(), &size, bytesOf(packed), packed.size());
    }
    finish(state, packed.size());
}

#define QEL_BOTH_KINDS Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)

BENCHMARK_TEMPLATE(BM_encode, cCodecHuffman)->QEL_BOTH_KINDS;
BENCHMARK(BM_zstdLiterals)->QEL_BOTH_KINDS;
BENCHMARK(BM_zlibHuffmanOnly)->QEL_BOTH_KINDS;
BENCHMARK_CAPTURE(BM_plain, huffmanEncode, plain::encodeHuffman, nullptr)->QEL_BOTH_KINDS;

BENCHMARK_TEMPLATE(BM_decode, cCodecHuffman)->QEL_BOTH_KINDS;
BENCHMARK(BM_libdeflateHuffmanOnly)->QEL_BOTH_KINDS;
BENCHMARK_CAPTURE(BM_plain, huffmanDecode, plain::decodeHuffman, plain::encodeHuffman)->QEL_BOTH_KINDS;

BENCHMARK_TEMPLATE(BM_encode, cCodecLZW)->QEL_BOTH_KINDS;
BENCHMARK(BM_libtiffEncode)->QEL_BOTH_KINDS;
BENCHMARK_CAPTURE(BM_plain, lzwEncode, plain::encodeLzw, nullptr)->QEL_BOTH_KINDS;

BENCHMARK_TEMPLATE(BM_decode, cCodecLZW)->QEL_BOTH_KINDS;
BENCHMARK(BM_libtiffDecode)->QEL_BOTH_KINDS;
BENCHMARK_CAPTURE(BM_plain, lzwDecode, plain::decodeLzw, plain::encodeLzw)->QEL_BOTH_KINDS;

BENCHMARK_TEMPLATE(BM_encode, cCodecLZ77)->QEL_BOTH_KINDS;
BENCHMARK_CAPTURE(BM_plain, lz77Encode, plain::encodeLz77, nullptr)->QEL_BOTH_KINDS;

BENCHMARK_TEMPLATE(BM_decode, cCodecLZ77)->QEL_BOTH_KINDS;
BENCHMARK(BM_libdeflateMatches)->QEL_BOTH_KINDS;
BENCHMARK_CAPTURE(BM_plain, lz77Decode, plain::decodeLz77, plain::encodeLz77)->QEL_BOTH_KINDS;

BENCHMARK_TEMPLATE(BM_encode, cCodecMTF)->QEL_BOTH_KINDS;
BENCHMARK_CAPTURE(BM_plain, mtfEncode, plain::encodeMtf, nullptr)->QEL_BOTH_KINDS;

BENCHMARK_TEMPLATE(BM_decode, cCodecMTF)->QEL_BOTH_KINDS;
BENCHMARK_CAPTURE(BM_plain, mtfDecode, plain::decodeMtf, plain::encodeMtf)->QEL_BOTH_KINDS;

BENCHMARK_TEMPLATE(BM_encode, cCodecZIP)->QEL_BOTH_KINDS;
BENCHMARK(BM_zlibCompress2)->QEL_BOTH_KINDS;
BENCHMARK_TEMPLATE(BM_decode, cCodecZIP)->QEL_BOTH_KINDS;
BENCHMARK(BM_zlibUncompress)->QEL_BOTH_KINDS;

} // namespace
