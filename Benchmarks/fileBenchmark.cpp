#include "System/File/fileBit.h"
#include "System/File/fileMem.h"
#include "System/System/string.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace Qel;

constexpr std::size_t valueCount = 16 * 1024;

// A stream as a function sees it that is handed one: the compiler cannot know which class it is.
[[gnu::noinline]] cFile &asAnyStream(cFile &file)
{
    benchmark::DoNotOptimize(&file);
    return file;
}

template <typename T>
std::vector<T> values()
{
    std::mt19937_64 random(5);
    std::vector<T> all(valueCount);
    for (T &value : all) {
        value = static_cast<T>(random());
    }
    return all;
}

template <typename T>
void finish(benchmark::State &state)
{
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(valueCount * sizeof(T)));
}

template <typename T>
void BM_FileMem_writeTyped(benchmark::State &state)
{
    auto const all = values<T>();
    cFileMem memory;
    cFile &file = asAnyStream(memory);
    for (auto _ : state) {
        memory.clear();
        for (T const value : all) {
            file << value;
        }
        benchmark::ClobberMemory();
    }
    finish<T>(state);
}

// The same on a stream whose class is in plain sight.
template <typename T>
void BM_FileMem_writeTypedDirectly(benchmark::State &state)
{
    auto const all = values<T>();
    cFileMem file;
    for (auto _ : state) {
        file.clear();
        for (T const value : all) {
            file << value;
        }
        benchmark::ClobberMemory();
    }
    finish<T>(state);
}

// The least that a stream does: a test for room, the copy, the position.
template <typename T>
void BM_memcpy_writeTyped(benchmark::State &state)
{
    auto const all = values<T>();
    std::vector<unsigned char> bytes(valueCount * sizeof(T));
    for (auto _ : state) {
        std::size_t position = 0;
        for (T const value : all) {
            benchmark::DoNotOptimize(position);
            if (bytes.size() - position >= sizeof(T)) {
                std::memcpy(bytes.data() + position, &value, sizeof(T));
                position += sizeof(T);
            }
        }
        benchmark::ClobberMemory();
    }
    finish<T>(state);
}

template <typename T>
void BM_FileMem_readTyped(benchmark::State &state)
{
    auto const all = values<T>();
    cFileMem memory(static_cast<unsigned int>(all.size() * sizeof(T)),
                    reinterpret_cast<unsigned char const *>(all.data()));
    cFile &file = asAnyStream(memory);
    for (auto _ : state) {
        file.seek(0);
        T sum = 0;
        for (std::size_t i = 0; i < valueCount; ++i) {
            T value = 0;
            file >> value;
            sum = static_cast<T>(sum + value);
        }
        benchmark::DoNotOptimize(sum);
    }
    finish<T>(state);
}

template <typename T>
void BM_FileMem_readTypedDirectly(benchmark::State &state)
{
    auto const all = values<T>();
    cFileMem file(static_cast<unsigned int>(all.size() * sizeof(T)),
                  reinterpret_cast<unsigned char const *>(all.data()));
    for (auto _ : state) {
        file.seek(0);
        T sum = 0;
        for (std::size_t i = 0; i < valueCount; ++i) {
            T value = 0;
            file >> value;
            sum = static_cast<T>(sum + value);
        }
        benchmark::DoNotOptimize(sum);
    }
    finish<T>(state);
}

template <typename T>
void BM_memcpy_readTyped(benchmark::State &state)
{
    auto const all = values<T>();
    auto const *const bytes = reinterpret_cast<unsigned char const *>(all.data());
    for (auto _ : state) {
        std::size_t position = 0;
        T sum = 0;
        for (std::size_t i = 0; i < valueCount; ++i) {
            T value = 0;
            benchmark::DoNotOptimize(position);
            if (valueCount * sizeof(T) - position >= sizeof(T)) {
                std::memcpy(&value, bytes + position, sizeof(T));
                position += sizeof(T);
            }
            sum = static_cast<T>(sum + value);
        }
        benchmark::DoNotOptimize(sum);
    }
    finish<T>(state);
}

void BM_FileMem_readBlocks(benchmark::State &state)
{
    auto const size = static_cast<unsigned int>(state.range(0));
    cFileMem memory(1 << 20, nullptr);
    std::memset(memory.getData(), 1, 1 << 20);
    cFile &file = asAnyStream(memory);
    std::vector<unsigned char> buffer(size);
    for (auto _ : state) {
        file.seek(0);
        while (file.read(buffer.data(), size) == size) {
            benchmark::DoNotOptimize(buffer.data());
        }
    }
    state.SetBytesProcessed(state.iterations() * (1 << 20));
}

void BM_memcpy_readBlocks(benchmark::State &state)
{
    auto const size = static_cast<std::size_t>(state.range(0));
    std::vector<unsigned char> const bytes(1 << 20, 1);
    std::vector<unsigned char> buffer(size);
    for (auto _ : state) {
        for (std::size_t at = 0; at + size <= bytes.size(); at += size) {
            std::memcpy(buffer.data(), bytes.data() + at, size);
            benchmark::DoNotOptimize(buffer.data());
        }
    }
    state.SetBytesProcessed(state.iterations() * (1 << 20));
}

void BM_FileMem_readString(benchmark::State &state)
{
    auto const length = static_cast<std::size_t>(state.range(0));
    cFileMem memory;
    memory.write_string(String(length, 'x'));
    cFile &file = asAnyStream(memory);
    String text;
    for (auto _ : state) {
        file.seek(0);
        file.read_string(text);
        benchmark::DoNotOptimize(text.data());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(length));
}

void BM_string_assign(benchmark::State &state)
{
    std::string const source(static_cast<std::size_t>(state.range(0)), 'x');
    std::string text;
    for (auto _ : state) {
        text.assign(source.data(), source.size());
        benchmark::DoNotOptimize(text.data());
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

constexpr unsigned int bitCount = 64 * 1024;

std::vector<bool> someBits()
{
    std::mt19937 random(9);
    std::vector<bool> bits(bitCount);
    for (unsigned int i = 0; i < bitCount; ++i) {
        bits[i] = random() % 2 != 0;
    }
    return bits;
}

// As the codecs call it: on a bit file of their own, past the table of virtual operations.
void BM_FileBit_write_bit(benchmark::State &state)
{
    auto const bits = someBits();
    for (auto _ : state) {
        cFileBit file;
        for (bool const bit : bits) {
            file.cFileBit::write_bit(bit);
        }
        benchmark::DoNotOptimize(file.getData());
    }
    state.SetItemsProcessed(state.iterations() * bitCount);
}

void BM_vectorBool_write_bit(benchmark::State &state)
{
    auto const bits = someBits();
    for (auto _ : state) {
        std::vector<bool> file;
        for (bool const bit : bits) {
            file.push_back(bit);
        }
        benchmark::DoNotOptimize(file.size());
    }
    state.SetItemsProcessed(state.iterations() * bitCount);
}

void BM_FileBit_read_bit(benchmark::State &state)
{
    cFileBit file;
    for (bool const bit : someBits()) {
        file.write_bit(bit);
    }
    for (auto _ : state) {
        file.seek(0);
        unsigned int ones = 0;
        for (unsigned int i = 0; i < bitCount; ++i) {
            ones += file.cFileBit::read_bit() ? 1 : 0;
        }
        benchmark::DoNotOptimize(ones);
    }
    state.SetItemsProcessed(state.iterations() * bitCount);
}

void BM_vectorBool_read_bit(benchmark::State &state)
{
    auto const file = someBits();
    for (auto _ : state) {
        unsigned int ones = 0;
        auto at = file.begin();
        for (unsigned int i = 0; i < bitCount; ++i) {
            ones += at != file.end() && *at++ ? 1 : 0;
        }
        benchmark::DoNotOptimize(ones);
    }
    state.SetItemsProcessed(state.iterations() * bitCount);
}

constexpr unsigned int fieldCount = 8 * 1024;

template <class Bits>
void BM_writeFields(benchmark::State &state)
{
    auto const width = static_cast<unsigned int>(state.range(0));
    for (auto _ : state) {
        Bits file;
        for (unsigned int i = 0; i < fieldCount; ++i) {
            file.write_bits(i, width);
        }
        benchmark::DoNotOptimize(file.getData());
    }
    state.SetItemsProcessed(state.iterations() * fieldCount);
}

template <class Bits>
void BM_readFields(benchmark::State &state)
{
    auto const width = static_cast<unsigned int>(state.range(0));
    Bits file;
    for (unsigned int i = 0; i < fieldCount; ++i) {
        file.write_bits(i, width);
    }
    for (auto _ : state) {
        file.seek(0);
        unsigned int sum = 0;
        for (unsigned int i = 0; i < fieldCount; ++i) {
            sum += file.read_bits(width);
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * fieldCount);
}

// The fields bit by bit, as their definition has it.
struct BitByBit {
    void write_bits(unsigned int value, unsigned int width)
    {
        for (unsigned int bit = width; bit-- > 0;) {
            file.cFileBit::write_bit((value >> bit & 1) != 0);
        }
    }
    unsigned int read_bits(unsigned int width)
    {
        unsigned int value = 0;
        for (unsigned int bit = 0; bit < width; ++bit) {
            value = value << 1 | (file.cFileBit::read_bit() ? 1u : 0u);
        }
        return value;
    }
    void seek(unsigned int bit) { file.seek(bit); }
    unsigned char *getData() { return file.getData(); }
    cFileBit file;
};

BENCHMARK_TEMPLATE(BM_FileMem_writeTyped, std::uint8_t);
BENCHMARK_TEMPLATE(BM_FileMem_writeTypedDirectly, std::uint8_t);
BENCHMARK_TEMPLATE(BM_memcpy_writeTyped, std::uint8_t);
BENCHMARK_TEMPLATE(BM_FileMem_writeTyped, std::uint32_t);
BENCHMARK_TEMPLATE(BM_FileMem_writeTypedDirectly, std::uint32_t);
BENCHMARK_TEMPLATE(BM_memcpy_writeTyped, std::uint32_t);
BENCHMARK_TEMPLATE(BM_FileMem_writeTyped, std::uint64_t);
BENCHMARK_TEMPLATE(BM_FileMem_writeTypedDirectly, std::uint64_t);
BENCHMARK_TEMPLATE(BM_memcpy_writeTyped, std::uint64_t);
BENCHMARK_TEMPLATE(BM_FileMem_readTyped, std::uint8_t);
BENCHMARK_TEMPLATE(BM_FileMem_readTypedDirectly, std::uint8_t);
BENCHMARK_TEMPLATE(BM_memcpy_readTyped, std::uint8_t);
BENCHMARK_TEMPLATE(BM_FileMem_readTyped, std::uint32_t);
BENCHMARK_TEMPLATE(BM_FileMem_readTypedDirectly, std::uint32_t);
BENCHMARK_TEMPLATE(BM_memcpy_readTyped, std::uint32_t);
BENCHMARK_TEMPLATE(BM_FileMem_readTyped, std::uint64_t);
BENCHMARK_TEMPLATE(BM_FileMem_readTypedDirectly, std::uint64_t);
BENCHMARK_TEMPLATE(BM_memcpy_readTyped, std::uint64_t);
BENCHMARK(BM_FileMem_readBlocks)->Arg(64)->Arg(4096);
BENCHMARK(BM_memcpy_readBlocks)->Arg(64)->Arg(4096);
BENCHMARK(BM_FileMem_readString)->Arg(12)->Arg(200);
BENCHMARK(BM_string_assign)->Arg(12)->Arg(200);
BENCHMARK(BM_FileBit_write_bit);
BENCHMARK(BM_vectorBool_write_bit);
BENCHMARK(BM_FileBit_read_bit);
BENCHMARK(BM_vectorBool_read_bit);
BENCHMARK_TEMPLATE(BM_writeFields, cFileBit)->Arg(9)->Arg(15)->Arg(32);
BENCHMARK_TEMPLATE(BM_writeFields, BitByBit)->Arg(9)->Arg(15)->Arg(32);
BENCHMARK_TEMPLATE(BM_readFields, cFileBit)->Arg(9)->Arg(15)->Arg(32);
BENCHMARK_TEMPLATE(BM_readFields, BitByBit)->Arg(9)->Arg(15)->Arg(32);

} // namespace
