#include "System/math/perlin.h"

#include "Support/PoolHeap/poolHeap.h"
#include "System/math/kernels/kernels.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace Qel {

namespace {

// The permutation of the reference implementation.
constexpr unsigned char permutation[256] = {
    151, 160, 137, 91,  90,  15,  131, 13,  201, 95,  96,  53,  194, 233, 7,   225, 140, 36,  103, 30,
    69,  142, 8,   99,  37,  240, 21,  10,  23,  190, 6,   148, 247, 120, 234, 75,  0,   26,  197, 62,
    94,  252, 219, 203, 117, 35,  11,  32,  57,  177, 33,  88,  237, 149, 56,  87,  174, 20,  125, 136,
    171, 168, 68,  175, 74,  165, 71,  134, 139, 48,  27,  166, 77,  146, 158, 231, 83,  111, 229, 122,
    60,  211, 133, 230, 220, 105, 92,  41,  55,  46,  245, 40,  244, 102, 143, 54,  65,  25,  63,  161,
    1,   216, 80,  73,  209, 76,  132, 187, 208, 89,  18,  169, 200, 196, 135, 130, 116, 188, 159, 86,
    164, 100, 109, 198, 173, 186, 3,   64,  52,  217, 226, 250, 124, 123, 5,   202, 38,  147, 118, 126,
    255, 82,  85,  212, 207, 206, 59,  227, 47,  16,  58,  17,  182, 189, 28,  42,  223, 183, 170, 213,
    119, 248, 152, 2,   44,  154, 163, 70,  221, 153, 101, 155, 167, 43,  172, 9,   129, 22,  39,  253,
    19,  98,  108, 110, 79,  113, 224, 232, 178, 185, 112, 104, 218, 246, 97,  228, 251, 34,  242, 193,
    238, 210, 144, 12,  191, 179, 162, 241, 81,  51,  145, 235, 249, 14,  239, 107, 49,  192, 214, 31,
    181, 199, 106, 157, 184, 84,  204, 176, 115, 121, 50,  45,  127, 4,   150, 254, 138, 236, 205, 93,
    222, 114, 67,  29,  24,  72,  243, 141, 128, 195, 78,  66,  215, 61,  156, 180,
};

constexpr std::uint32_t pieceSamples = 4096; // of a row at a time, with its octaves

// The bytes of a field, or 0 if they cannot be counted.
std::size_t fieldBytes(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::size_t each)
{
    std::uint64_t const plane = std::uint64_t{a} * b;
    std::uint64_t const most = std::numeric_limits<std::ptrdiff_t>::max() / each;
    return c != 0 && plane > most / c ? 0 : static_cast<std::size_t>(plane * c * each);
}

unsigned char *newField(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::size_t each)
{
    std::size_t const bytes = fieldBytes(a, b, c, each);
    if (bytes == 0 && a != 0 && b != 0 && c != 0) {
        return nullptr;
    }
    return static_cast<unsigned char *>(PoolHeap::std_alloc(std::max<std::size_t>(bytes, 1)));
}

// One row with its octaves; row(octave, first, end, out) gives the samples of one of them.
template <class Row>
void octaveRow(std::uint32_t samples, unsigned char *out, Row row)
{
    unsigned char octave[4][pieceSamples];
    for (std::uint32_t first = 0; first < samples;) {
        std::uint32_t const count = std::min(samples - first, pieceSamples);
        for (int pass = 0; pass < 4; ++pass) {
            row(pass, first, first + count, octave[pass]);
        }
        for (std::uint32_t i = 0; i < count; ++i) {
            std::uint32_t const element = std::uint32_t{octave[0][i]} | std::uint32_t{octave[1][i]} << 8U |
                                          std::uint32_t{octave[2][i]} << 16U |
                                          std::uint32_t{octave[3][i]} << 24U;
            std::memcpy(out + std::size_t{4} * i, &element, sizeof element);
        }
        out += std::size_t{4} * count;
        first += count;
    }
}

} // namespace

constinit NoisePermutation const noisePermutation = [] {
    NoisePermutation twice{};
    for (int i = 0; i < 512; ++i) {
        twice.at[i] = permutation[i & 255];
    }
    return twice;
}();

constexpr Perlin::Perm::Perm() : m_values{}
{
    for (int i = 0; i < 512; ++i) {
        m_values[i] = permutation[i & 255];
    }
}

constinit Perlin::Perm const Perlin::p;

float Perlin::grad(int hash, float x, float y, float z)
{
    int const h = hash & 15;
    float const u = h < 8 ? x : y;
    float const v = h < 4 ? y : h == 12 || h == 14 ? x : z;
    return ((h & 1) == 0 ? u : -u) + ((h & 2) == 0 ? v : -v);
}

float Perlin::noise(float x, float y)
{
    return kernels->noisePlane(x, y);
}

float Perlin::noise(float x, float y, float z)
{
    return kernels->noiseSpace(x, y, z);
}

unsigned char *Perlin::createField(unsigned int rows, unsigned int columns, unsigned int scale)
{
    unsigned char *const field = newField(rows, columns, 1, 1);
    if (field == nullptr || columns == 0) {
        return field;
    }
    double const size = static_cast<double>(rows) * columns;
    auto const step = static_cast<float>(1.0 / std::sqrt(size) * scale);
    for (std::uint32_t i = 0; i < rows; ++i) {
        kernels->noiseRowPlane(static_cast<float>(i) * step, step, 0, columns,
                               field + std::size_t{i} * columns);
    }
    return field;
}

unsigned char *Perlin::createFieldWithOctave123(unsigned int rows, unsigned int columns, unsigned int scale)
{
    unsigned char *const field = newField(rows, columns, 1, 4);
    if (field == nullptr || columns == 0) {
        return field;
    }
    double const size = static_cast<double>(rows) * columns;
    auto const step = static_cast<float>(scale * (1.0 / std::sqrt(size)));
    for (std::uint32_t i = 0; i < rows; ++i) {
        octaveRow(columns, field + std::size_t{4} * i * columns,
                  [&](int octave, std::uint32_t first, std::uint32_t end, unsigned char *out) {
                      float const finer = step * static_cast<float>(1 << octave);
                      kernels->noiseRowPlane(static_cast<float>(i) * finer, finer, first, end, out);
                  });
    }
    return field;
}

unsigned char *Perlin::createFieldWithOctave123(unsigned int sizeA, unsigned int sizeB, unsigned int sizeC,
                                                unsigned int scale)
{
    unsigned char *const field = newField(sizeA, sizeB, sizeC, 4);
    if (field == nullptr || sizeB == 0 || sizeC == 0) {
        return field;
    }
    double const size = std::sqrt(static_cast<double>(sizeA) * sizeB) * sizeC;
    auto const step = static_cast<float>(scale * (1.0 / std::sqrt(size)));
    unsigned char *out = field;
    for (std::uint32_t i = 0; i < sizeA; ++i) {
        for (std::uint32_t j = 0; j < sizeB; ++j, out += std::size_t{4} * sizeC) {
            octaveRow(sizeC, out, [&](int octave, std::uint32_t first, std::uint32_t end, unsigned char *to) {
                float const finer = step * static_cast<float>(1 << octave);
                kernels->noiseRowSpace(static_cast<float>(i) * finer, static_cast<float>(j) * finer, finer,
                                       first, end, to);
            });
        }
    }
    return field;
}

} // namespace Qel
