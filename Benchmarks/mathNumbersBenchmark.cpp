#include "System/math/kernelLevel.h"
#include "System/math/rand.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <random>
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
    setKernelLevel(static_cast<eKernelLevel>(state.range(0)));
    cMersenneTwister twister;
    for (auto _ : state) {
        benchmark::DoNotOptimize(twister.Reload());
    }
    state.SetItemsProcessed(state.iterations() * 624);
    setKernelLevel(kernelLevelMax());
}
BENCHMARK(BM_Rand_reload)->DenseRange(KERNEL_PLAIN, KERNEL_AVX512);

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
        twister.Random(out.data(), out.size());
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
        twister.Random01(out.data(), out.size());
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

} // namespace
} // namespace Qel
