#include "Support/D3DX/d3dx9kernels.h"

#include <immintrin.h>

namespace {

__m512 fourTimes(float const *four)
{
    return _mm512_broadcast_f32x4(_mm_loadu_ps(four));
}

// Within two lines of the instruction cache: one more costs a tenth.
[[gnu::aligned(64)]] void multiply(D3DXMATRIX *out, D3DXMATRIX const *left, D3DXMATRIX const *right)
{
    auto const *const a = reinterpret_cast<float const *>(left);
    auto const *const b = reinterpret_cast<float const *>(right);
    __m512 const rows = _mm512_loadu_ps(a);
    __m512 const x = _mm512_mul_ps(_mm512_permute_ps(rows, 0x00), fourTimes(b));
    __m512 const y = _mm512_mul_ps(_mm512_permute_ps(rows, 0x55), fourTimes(b + 4));
    __m512 const z = _mm512_mul_ps(_mm512_permute_ps(rows, 0xAA), fourTimes(b + 8));
    __m512 const w = _mm512_mul_ps(_mm512_permute_ps(rows, 0xFF), fourTimes(b + 12));
    _mm512_storeu_ps(reinterpret_cast<float *>(out), _mm512_add_ps(_mm512_add_ps(_mm512_add_ps(x, y), z), w));
}

void transform(float *out, std::size_t outStride, float const *in, std::size_t inStride, float const *matrix,
               std::size_t count)
{
    __m512 const m[4] = {fourTimes(matrix), fourTimes(matrix + 4), fourTimes(matrix + 8),
                         fourTimes(matrix + 12)};
    // A load takes the float behind a point as well, so the last points go to the plain kernel.
    while (count > 4) {
        __m512 points = _mm512_castps128_ps512(_mm_loadu_ps(in));
        points = _mm512_insertf32x4(points, _mm_loadu_ps(in + inStride), 1);
        points = _mm512_insertf32x4(points, _mm_loadu_ps(in + 2 * inStride), 2);
        points = _mm512_insertf32x4(points, _mm_loadu_ps(in + 3 * inStride), 3);
        __m512 const x = _mm512_mul_ps(_mm512_permute_ps(points, 0x00), m[0]);
        __m512 const y = _mm512_mul_ps(_mm512_permute_ps(points, 0x55), m[1]);
        __m512 const z = _mm512_mul_ps(_mm512_permute_ps(points, 0xAA), m[2]);
        __m512 const result = _mm512_add_ps(_mm512_add_ps(_mm512_add_ps(x, y), z), m[3]);
        if (outStride == 4) {
            _mm512_storeu_ps(out, result);
        } else {
            _mm_storeu_ps(out, _mm512_castps512_ps128(result));
            _mm_storeu_ps(out + outStride, _mm512_extractf32x4_ps(result, 1));
            _mm_storeu_ps(out + 2 * outStride, _mm512_extractf32x4_ps(result, 2));
            _mm_storeu_ps(out + 3 * outStride, _mm512_extractf32x4_ps(result, 3));
        }
        in += 4 * inStride;
        out += 4 * outStride;
        count -= 4;
    }
    d3dxKernelsBase.transform(out, outStride, in, inStride, matrix, count);
}

} // namespace

D3dxKernels const d3dxKernelsAvx512{multiply, transform};
