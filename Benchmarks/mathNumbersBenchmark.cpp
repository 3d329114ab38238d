#include "Support/OS/processorLevel.h"
#include "Support/PoolHeap/poolHeap.h"
#include "System/System/stringTools.h"
#include "System/math/crc32.h"
#include "System/math/fft.h"
#include "System/math/md5.h"
#include "System/math/perlin.h"
#include "System/math/rand.h"
#include "System/math/splineCR.h"

#include <benchmark/benchmark.h>
#include <fftw3.h>
#include <kiss_fft.h>
#include <libdeflate.h>
#define OPENSSL_SUPPRESS_DEPRECATED
#include <openssl/md5.h>
#define STB_PERLIN_IMPLEMENTATION
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wunused-function"
#include <stb/stb_perlin.h>
#pragma GCC diagnostic pop

#include <array>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace Qel {
namespace {

constexpr std::size_t draws = 4096;

// The bound on drawing: blocks stepped and tempered in vectors into an array, with nobody to hand them to
// one by one.
class BlockTwister {
public:
    BlockTwister()
    {
        std::uint32_t word = 4357;
        for (std::uint32_t &out : m_state) {
            out = word;
            word *= 69069U;
        }
    }

    void next(std::uint32_t *out)
    {
        std::uint32_t *const s = m_state.data();
        for (int i = 0; i < 227; ++i) {
            s[i] = s[i + 397] ^ mixed(s[i], s[i + 1]);
        }
        for (int i = 227; i < 623; ++i) {
            s[i] = s[i - 227] ^ mixed(s[i], s[i + 1]);
        }
        s[623] = s[396] ^ mixed(s[623], s[0]);
        for (int i = 0; i < 624; ++i) {
            std::uint32_t y = s[i];
            y ^= y >> 11U;
            y ^= (y << 7U) & 0x9D2C5680U;
            y ^= (y << 15U) & 0xEFC60000U;
            out[i] = y ^ (y >> 18U);
        }
    }

private:
    static std::uint32_t mixed(std::uint32_t top, std::uint32_t rest)
    {
        std::uint32_t const joined = (top & 0x80000000U) | (rest & 0x7FFFFFFFU);
        return (joined >> 1U) ^ ((0U - (rest & 1U)) & 0x9908B0DFU);
    }
    std::array<std::uint32_t, 624> m_state;
};

void BM_Rand_reload(benchmark::State &state)
{
    os::setProcessorLevel(static_cast<os::eProcessorLevel>(state.range(0)));
    cMersenneTwister twister;
    for (auto _ : state) {
        benchmark::DoNotOptimize(twister.Reload());
    }
    state.SetItemsProcessed(state.iterations() * 624);
    os::setProcessorLevel(os::processorLevelMax());
}
BENCHMARK(BM_Rand_reload)->DenseRange(os::PROCESSOR_PLAIN, os::PROCESSOR_AVX512);

void BM_Rand_draw(benchmark::State &state)
{
    std::vector<std::uint32_t> out(draws);
    cMersenneTwister twister;
    for (auto _ : state) {
        for (std::uint32_t &value : out) {
            value = twister.Random();
        }
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(draws));
}
BENCHMARK(BM_Rand_draw);

void BM_Rand_drawMany(benchmark::State &state)
{
    std::vector<std::uint32_t> out(draws);
    cMersenneTwister twister;
    for (auto _ : state) {
        twister.fill(out.data(), out.size());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(draws));
}
BENCHMARK(BM_Rand_drawMany);

void BM_Rand_drawShared(benchmark::State &state)
{
    std::vector<std::uint32_t> out(draws);
    for (auto _ : state) {
        for (std::uint32_t &value : out) {
            value = cRand::random();
        }
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(draws));
}
BENCHMARK(BM_Rand_drawShared);

void BM_Rand_drawStd(benchmark::State &state)
{
    std::vector<std::uint32_t> out(draws);
    std::mt19937 twister(4357);
    for (auto _ : state) {
        for (std::uint32_t &value : out) {
            value = static_cast<std::uint32_t>(twister());
        }
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(draws));
}
BENCHMARK(BM_Rand_drawStd);

void BM_Rand_drawBound(benchmark::State &state)
{
    std::vector<std::uint32_t> out(draws + 624);
    BlockTwister twister;
    for (auto _ : state) {
        for (std::size_t i = 0; i < draws; i += 624) {
            twister.next(out.data() + i);
        }
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>((draws + 623) / 624 * 624));
}
BENCHMARK(BM_Rand_drawBound);

void BM_Rand_float(benchmark::State &state)
{
    std::vector<float> out(draws);
    cMersenneTwister twister;
    for (auto _ : state) {
        for (float &value : out) {
            value = twister.Random01();
        }
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(draws));
}
BENCHMARK(BM_Rand_float);

void BM_Rand_floatMany(benchmark::State &state)
{
    std::vector<float> out(draws);
    cMersenneTwister twister;
    for (auto _ : state) {
        twister.fill01(out.data(), out.size());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(draws));
}
BENCHMARK(BM_Rand_floatMany);

void BM_Rand_floatStd(benchmark::State &state)
{
    std::vector<float> out(draws);
    std::mt19937 twister(4357);
    for (auto _ : state) {
        for (float &value : out) {
            value = static_cast<float>(static_cast<std::int32_t>(twister() & 0x7FFFFFU)) * 1.1920929e-7F;
        }
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(draws));
}
BENCHMARK(BM_Rand_floatStd);

void BM_Rand_floatBound(benchmark::State &state)
{
    std::vector<std::uint32_t> block(624);
    std::vector<float> out(draws + 624);
    BlockTwister twister;
    for (auto _ : state) {
        for (std::size_t i = 0; i < draws; i += 624) {
            twister.next(block.data());
            for (std::size_t j = 0; j < 624; ++j) {
                out[i + j] =
                    static_cast<float>(static_cast<std::int32_t>(block[j] & 0x7FFFFFU)) * 1.1920929e-7F;
            }
        }
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>((draws + 623) / 624 * 624));
}
BENCHMARK(BM_Rand_floatBound);

std::vector<unsigned char> randomBytes(std::size_t count)
{
    std::mt19937 twister(1);
    std::vector<unsigned char> bytes(count);
    for (unsigned char &byte : bytes) {
        byte = static_cast<unsigned char>(twister());
    }
    return bytes;
}

void BM_Crc32_bytes(benchmark::State &state)
{
    std::vector<unsigned char> const bytes = randomBytes(static_cast<std::size_t>(state.range(0)));
    os::setProcessorLevel(static_cast<os::eProcessorLevel>(state.range(1)));
    cCRC32 crc;
    for (auto _ : state) {
        benchmark::DoNotOptimize(crc.add(bytes.data(), static_cast<unsigned int>(bytes.size())));
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
    os::setProcessorLevel(os::processorLevelMax());
}
BENCHMARK(BM_Crc32_bytes)
    ->ArgsProduct({{64, 4096, 1 << 20},
                   benchmark::CreateDenseRange(os::PROCESSOR_PLAIN, os::PROCESSOR_AVX512, 1)});

void BM_Crc32_bytesLibdeflate(benchmark::State &state)
{
    std::vector<unsigned char> const bytes = randomBytes(static_cast<std::size_t>(state.range(0)));
    std::uint32_t crc = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(crc = libdeflate_crc32(crc, bytes.data(), bytes.size()));
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_Crc32_bytesLibdeflate)->Arg(64)->Arg(4096)->Arg(1 << 20);

// Names of 10 to 40 characters one behind the other in memory, as a table of names has them.
class Names {
public:
    Names()
    {
        std::mt19937 twister(2);
        std::vector<std::size_t> starts;
        for (int i = 0; i < 1000; ++i) {
            starts.push_back(m_text.size());
            for (std::size_t length = 10 + twister() % 31; length > 0; --length) {
                m_text.push_back("abcdefghijklmnopqrstuvwxyzABCDEF_/\\."[twister() % 36]);
            }
            m_text.push_back('\0');
        }
        for (std::size_t const start : starts) {
            m_names.push_back(m_text.data() + start);
        }
    }
    auto begin() const { return m_names.begin(); }
    auto end() const { return m_names.end(); }
    std::int64_t size() const { return static_cast<std::int64_t>(m_names.size()); }

private:
    std::string m_text;
    std::vector<char const *> m_names;
};

void BM_CalcHash_plain(benchmark::State &state)
{
    Names const names;
    os::setProcessorLevel(static_cast<os::eProcessorLevel>(state.range(0)));
    for (auto _ : state) {
        for (char const *const name : names) {
            benchmark::DoNotOptimize(StringTools::calcHash(name));
        }
    }
    state.SetItemsProcessed(state.iterations() * names.size());
    os::setProcessorLevel(os::processorLevelMax());
}
BENCHMARK(BM_CalcHash_plain)->DenseRange(os::PROCESSOR_PLAIN, os::PROCESSOR_AVX512);

void BM_CalcHash_path(benchmark::State &state)
{
    Names const names;
    os::setProcessorLevel(static_cast<os::eProcessorLevel>(state.range(0)));
    unsigned char const *const map = StringTools::getMapTable(MAP_PATH);
    for (auto _ : state) {
        for (char const *const name : names) {
            benchmark::DoNotOptimize(StringTools::calcHash(name, map));
        }
    }
    state.SetItemsProcessed(state.iterations() * names.size());
    os::setProcessorLevel(os::processorLevelMax());
}
BENCHMARK(BM_CalcHash_path)->DenseRange(os::PROCESSOR_PLAIN, os::PROCESSOR_AVX512);

void BM_CalcHash_libdeflateAndStrlen(benchmark::State &state)
{
    Names const names;
    for (auto _ : state) {
        for (char const *const name : names) {
            benchmark::DoNotOptimize(libdeflate_crc32(0, name, std::strlen(name)));
        }
    }
    state.SetItemsProcessed(state.iterations() * names.size());
}
BENCHMARK(BM_CalcHash_libdeflateAndStrlen);

void BM_Md5_bytes(benchmark::State &state)
{
    std::vector<unsigned char> const bytes = randomBytes(static_cast<std::size_t>(state.range(0)));
    MD5Hash hash;
    for (auto _ : state) {
        cMD5 md5;
        md5.update(bytes.data(), static_cast<unsigned int>(bytes.size()));
        md5.final(hash);
        benchmark::DoNotOptimize(hash);
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_Md5_bytes)->Arg(32)->Arg(1 << 20);

void BM_Md5_bytesOpenssl(benchmark::State &state)
{
    std::vector<unsigned char> const bytes = randomBytes(static_cast<std::size_t>(state.range(0)));
    unsigned char hash[16];
    for (auto _ : state) {
        MD5_CTX md5;
        MD5_Init(&md5);
        MD5_Update(&md5, bytes.data(), bytes.size());
        MD5_Final(hash, &md5);
        benchmark::DoNotOptimize(hash);
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_Md5_bytesOpenssl)->Arg(32)->Arg(1 << 20);

// Arrays on boundaries of cache lines, for every program alike.
template <class T>
class LineArray {
public:
    explicit LineArray(std::size_t size) : m_size(size), m_data(fftw_malloc(size * sizeof(T) + 64)) {}
    ~LineArray() { fftw_free(m_data); }
    LineArray(LineArray const &) = delete;
    LineArray &operator=(LineArray const &) = delete;

    T *data()
    {
        auto const address = reinterpret_cast<std::uintptr_t>(m_data);
        return reinterpret_cast<T *>((address + 63) & ~std::uintptr_t{63});
    }
    std::size_t size() const { return m_size; }

private:
    std::size_t m_size;
    void *m_data;
};

template <class T>
struct Samples {
    explicit Samples(std::size_t size) : realIn(size), imagIn(size), realOut(size), imagOut(size)
    {
        cMersenneTwister twister(3);
        for (std::size_t i = 0; i < size; ++i) {
            realIn.data()[i] = static_cast<T>(twister.Random01() - 0.5F);
            imagIn.data()[i] = static_cast<T>(twister.Random01() - 0.5F);
        }
    }
    LineArray<T> realIn, imagIn, realOut, imagOut;
};

void BM_Fft_double(benchmark::State &state)
{
    Samples<double> s(static_cast<std::size_t>(state.range(0)));
    os::setProcessorLevel(static_cast<os::eProcessorLevel>(state.range(1)));
    for (auto _ : state) {
        cFFT::fft_double(static_cast<unsigned int>(state.range(0)), 0, s.realIn.data(), s.imagIn.data(),
                         s.realOut.data(), s.imagOut.data());
        benchmark::ClobberMemory();
    }
    os::setProcessorLevel(os::processorLevelMax());
}
BENCHMARK(BM_Fft_double)
    ->ArgsProduct({{1024, 65536, 1 << 20}, {os::PROCESSOR_PLAIN, os::PROCESSOR_AVX2, os::PROCESSOR_AVX512}});

void BM_Fft_doubleFftw(benchmark::State &state)
{
    auto const size = static_cast<std::size_t>(state.range(0));
    Samples<double> s(size);
    fftw_iodim const dim{static_cast<int>(size), 1, 1};
    fftw_plan const plan = fftw_plan_guru_split_dft(1, &dim, 0, nullptr, s.realIn.data(), s.imagIn.data(),
                                                    s.realOut.data(), s.imagOut.data(), FFTW_MEASURE);
    for (auto _ : state) {
        fftw_execute(plan);
        benchmark::ClobberMemory();
    }
    fftw_destroy_plan(plan);
}
BENCHMARK(BM_Fft_doubleFftw)->Arg(1024)->Arg(65536)->Arg(1 << 20);

void BM_Fft_float(benchmark::State &state)
{
    Samples<float> s(static_cast<std::size_t>(state.range(0)));
    os::setProcessorLevel(static_cast<os::eProcessorLevel>(state.range(1)));
    for (auto _ : state) {
        cFFT::fft_float(static_cast<unsigned int>(state.range(0)), 0, s.realIn.data(), s.imagIn.data(),
                        s.realOut.data(), s.imagOut.data());
        benchmark::ClobberMemory();
    }
    os::setProcessorLevel(os::processorLevelMax());
}
BENCHMARK(BM_Fft_float)
    ->ArgsProduct({{1024, 65536}, {os::PROCESSOR_PLAIN, os::PROCESSOR_AVX2, os::PROCESSOR_AVX512}});

void BM_Fft_floatFftw(benchmark::State &state)
{
    auto const size = static_cast<std::size_t>(state.range(0));
    Samples<float> s(size);
    fftwf_iodim const dim{static_cast<int>(size), 1, 1};
    fftwf_plan const plan = fftwf_plan_guru_split_dft(1, &dim, 0, nullptr, s.realIn.data(), s.imagIn.data(),
                                                      s.realOut.data(), s.imagOut.data(), FFTW_MEASURE);
    for (auto _ : state) {
        fftwf_execute(plan);
        benchmark::ClobberMemory();
    }
    fftwf_destroy_plan(plan);
}
BENCHMARK(BM_Fft_floatFftw)->Arg(1024)->Arg(65536);

void BM_Fft_floatKiss(benchmark::State &state)
{
    auto const size = static_cast<std::size_t>(state.range(0));
    std::vector<kiss_fft_cpx> in(size);
    std::vector<kiss_fft_cpx> out(size);
    cMersenneTwister twister(3);
    for (kiss_fft_cpx &value : in) {
        value = {twister.Random01(), twister.Random01()};
    }
    kiss_fft_cfg const plan = kiss_fft_alloc(static_cast<int>(size), 0, nullptr, nullptr);
    for (auto _ : state) {
        kiss_fft(plan, in.data(), out.data());
        benchmark::ClobberMemory();
    }
    kiss_fft_free(plan);
}
BENCHMARK(BM_Fft_floatKiss)->Arg(1024)->Arg(65536);

struct Places {
    Places()
    {
        cMersenneTwister twister(4);
        for (auto *const values : {&x, &y, &z}) {
            for (float &value : *values) {
                value = (twister.Random01() - 0.5F) * 200;
            }
        }
    }
    std::array<float, 1000> x, y, z;
};

void BM_Perlin_space(benchmark::State &state)
{
    Places const places;
    os::setProcessorLevel(static_cast<os::eProcessorLevel>(state.range(0)));
    for (auto _ : state) {
        float sum = 0;
        for (std::size_t i = 0; i < places.x.size(); ++i) {
            sum += Perlin::noise(places.x[i], places.y[i], places.z[i]);
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * 1000);
    os::setProcessorLevel(os::processorLevelMax());
}
BENCHMARK(BM_Perlin_space)->DenseRange(os::PROCESSOR_PLAIN, os::PROCESSOR_AVX512);

void BM_Perlin_spaceStb(benchmark::State &state)
{
    Places const places;
    for (auto _ : state) {
        float sum = 0;
        for (std::size_t i = 0; i < places.x.size(); ++i) {
            sum += stb_perlin_noise3(places.x[i], places.y[i], places.z[i], 0, 0, 0);
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * 1000);
}
BENCHMARK(BM_Perlin_spaceStb);

void BM_Perlin_plane(benchmark::State &state)
{
    Places const places;
    for (auto _ : state) {
        float sum = 0;
        for (std::size_t i = 0; i < places.x.size(); ++i) {
            sum += Perlin::noise(places.x[i], places.y[i]);
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * 1000);
}
BENCHMARK(BM_Perlin_plane);

void BM_Perlin_field(benchmark::State &state)
{
    os::setProcessorLevel(static_cast<os::eProcessorLevel>(state.range(1)));
    for (auto _ : state) {
        PoolHeap::std_free(Perlin::createField(512, 512, static_cast<unsigned int>(state.range(0))));
    }
    state.SetItemsProcessed(state.iterations() * 512 * 512);
    os::setProcessorLevel(os::processorLevelMax());
}
BENCHMARK(BM_Perlin_field)
    ->ArgsProduct({{8, 64, 256}, benchmark::CreateDenseRange(os::PROCESSOR_PLAIN, os::PROCESSOR_AVX512, 1)});

// The bound on fields: a cell at a time, its four gradients as linear functions of the column, in vectors as
// wide as the processor has them.
[[gnu::target_clones("default", "arch=haswell", "arch=skylake-avx512")]] void
cellBytes(float const *slopes, float const *offsets, float fade, float t, float step, int count,
          unsigned char *out)
{
    for (int i = 0; i < count; ++i) {
        float const y = t + static_cast<float>(i) * step;
        float const below = y - 1;
        float const w = y * y * y * (y * (y * 6 - 15) + 10);
        float const a = offsets[0] + slopes[0] * y;
        float const b = offsets[1] + slopes[1] * y;
        float const c = offsets[2] + slopes[2] * below;
        float const d = offsets[3] + slopes[3] * below;
        float const near = a + (b - a) * fade;
        float const far = c + (d - c) * fade;
        out[i] = static_cast<unsigned char>(static_cast<int>((near + (far - near) * w + 1) * 128));
    }
}

void BM_Perlin_fieldBound(benchmark::State &state)
{
    constexpr int size = 512;
    auto const cells = static_cast<int>(state.range(0));
    float const step = static_cast<float>(cells) / size;
    std::vector<unsigned char> field(size * size);
    for (auto _ : state) {
        for (int i = 0; i < size; ++i) {
            float const at = static_cast<float>(i) * step;
            float const x = at - static_cast<float>(static_cast<int>(at));
            float const fade = x * x * x * (x * (x * 6 - 15) + 10);
            int const row = static_cast<int>(at);
            for (int cell = 0; cell < cells; ++cell) {
                float slopes[4];
                float offsets[4];
                for (int corner = 0; corner < 4; ++corner) {
                    int const hash = Perlin::p[Perlin::p[row + (corner & 1)] + cell + (corner >> 1)];
                    float const side = x - static_cast<float>(corner & 1);
                    slopes[corner] = (hash & 1) != 0 ? -1.0F : 1.0F;
                    offsets[corner] = (hash & 2) != 0 ? -side : side;
                }
                cellBytes(slopes, offsets, fade, 0, step, size / cells,
                          field.data() + i * size + cell * size / cells);
            }
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * size * size);
}
BENCHMARK(BM_Perlin_fieldBound)->Arg(8)->Arg(64);

void BM_Perlin_fieldInSpace(benchmark::State &state)
{
    for (auto _ : state) {
        PoolHeap::std_free(Perlin::createFieldWithOctave123(64, 64, 64, 2));
    }
    state.SetItemsProcessed(state.iterations() * 4 * 64 * 64 * 64);
}
BENCHMARK(BM_Perlin_fieldInSpace);

void BM_SplineCR_interpolate(benchmark::State &state)
{
    cSplineCR spline;
    cMersenneTwister twister(5);
    spline.setAutoCalculate(false);
    for (int i = 0; i < 100; ++i) {
        spline.addValue(D3DXVECTOR3(twister.Random01(), twister.Random01(), twister.Random01()));
    }
    spline.recalcTangents();
    for (auto _ : state) {
        for (int i = 0; i < 1000; ++i) {
            benchmark::DoNotOptimize(spline.interpolate(static_cast<float>(i) * 0.001F));
        }
    }
    state.SetItemsProcessed(state.iterations() * 1000);
}
BENCHMARK(BM_SplineCR_interpolate);

} // namespace
} // namespace Qel
