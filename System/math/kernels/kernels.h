#pragma once

#include <cstddef>
#include <cstdint>

namespace Qel {

/// A name's hash and the bytes before its terminator, counted up to 0xFFFFFFFF.
struct NameHash {
    std::uint32_t hash;
    std::uint32_t length;
};

constexpr std::size_t shortNameRoom = 64; ///< bytes of a short name with the zeros behind it

/// What a byte does to a CRC-32 by itself, and seen so many bytes further on.
struct Crc32Steps {
    std::uint32_t after[8][256];
};

extern Crc32Steps const crc32Steps;

constexpr std::size_t fftTableSize = 65536; ///< blocks up to this size have their twiddles in a table

/// The twiddles of blocks of 2 to fftTableSize samples: those of a block start at half its size.
struct FftTables {
    alignas(64) double re[fftTableSize];
    alignas(64) double im[fftTableSize];
};

/// Cosine and sine of a block's angles, one after the other, each from the two before it.
struct FftRecurrence {
    double re1, re2, im1, im2, w;

    void step(double *re, double *im, std::size_t count)
    {
        for (std::size_t i = 0; i < count; ++i) {
            re[i] = w * re1 - re2;
            re2 = re1;
            re1 = re[i];
            im[i] = w * im1 - im2;
            im2 = im1;
            im1 = im[i];
        }
    }
};

/// A transform: sizes are powers of two, from 2 on; null as imagIn stands for zeros.
template <class T>
struct FftJob {
    std::size_t size;
    bool inverse;
    T const *realIn;
    T const *imagIn;
    T *realOut;
    T *imagOut;
};

/// The permutation of the noise, twice in a row.
struct NoisePermutation {
    unsigned char at[512];
};

extern NoisePermutation const noisePermutation;

/// One set of numeric kernels. There is one per processor level, each compiled in a source of its own.
///
/// A source of a level above the plain one includes nothing but intrinsics and headers of this folder,
/// whose functions all stand in an unnamed namespace: an inline function of the standard library that was
/// compiled there could be the copy that the linker keeps for everyone.
struct Kernels {
    /// Goes on with a CRC-32 that is not inverted.
    std::uint32_t (*crc32)(std::uint32_t crc, unsigned char const *data, std::size_t size);

    /// The same from 0xFFFFFFFF over a text up to its terminator, as it stands or through a map of 256 bytes.
    NameHash (*hashName)(char const *text);
    NameHash (*hashMappedName)(char const *text, unsigned char const *map);

    /// The same, and writes the mapped bytes out, zeros behind them, where they are fewer than
    /// shortNameRoom. A longer name has a length of shortNameRoom and no hash, and anything is written.
    NameHash (*mapShortName)(char const *text, unsigned char const *map, char *out);

    /// A transform, given the twiddles of its blocks up to fftTableSize and a way to step those beyond.
    void (*fftDouble)(FftJob<double> const &job, FftTables const &tables,
                      FftRecurrence (*recurrence)(std::size_t block));
    void (*fftFloat)(FftJob<float> const &job, FftTables const &tables,
                     FftRecurrence (*recurrence)(std::size_t block));

    /// Noise at one place, in the plane and in space.
    float (*noisePlane)(float x, float y);
    float (*noiseSpace)(float x, float y, float z);

    /// Noise as bytes at samples first to end - 1 of a row; its last coordinate is the sample times @p step.
    void (*noiseRowPlane)(float x, float step, std::uint32_t first, std::uint32_t end, unsigned char *out);
    void (*noiseRowSpace)(float x, float y, float step, std::uint32_t first, std::uint32_t end,
                          unsigned char *out);

    /// Replaces all 624 words of a Mersenne Twister's state by the next block, untempered.
    void (*stepTwister)(std::uint32_t *state);

    /// Writes the tempered values of words of such a state, and the same as floats from 0 to below 1.
    void (*temperTwister)(std::uint32_t const *words, std::size_t count, std::uint32_t *values);
    void (*temperTwister01)(std::uint32_t const *words, std::size_t count, float *values);
};

extern Kernels const kernelsPlain;
extern Kernels const kernelsSse42;
extern Kernels const kernelsAvx2;
extern Kernels const kernelsAvx512;

/// The set in use. Never null: the plain set before the library's constructors have run.
extern Kernels const *kernels;

} // namespace Qel
