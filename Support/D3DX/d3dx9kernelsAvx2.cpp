#include "Support/D3DX/d3dx9kernels.h"

#include <immintrin.h>

namespace {

__m256 twice(float const *four)
{
    return _mm256_broadcast_ps(reinterpret_cast<__m128 const *>(four));
}

// Two rows at a time, each against the same four rows of the other matrix.
__m256 rowsTimes(__m256 rows, __m256 const *m)
{
    __m256 const x = _mm256_mul_ps(_mm256_permute_ps(rows, 0x00), m[0]);
    __m256 const y = _mm256_mul_ps(_mm256_permute_ps(rows, 0x55), m[1]);
    __m256 const z = _mm256_mul_ps(_mm256_permute_ps(rows, 0xAA), m[2]);
    __m256 const w = _mm256_mul_ps(_mm256_permute_ps(rows, 0xFF), m[3]);
    return _mm256_add_ps(_mm256_add_ps(_mm256_add_ps(x, y), z), w);
}

void multiply(D3DXMATRIX *out, D3DXMATRIX const *left, D3DXMATRIX const *right)
{
    auto const *const a = reinterpret_cast<float const *>(left);
    auto const *const b = reinterpret_cast<float const *>(right);
    __m256 const m[4] = {twice(b), twice(b + 4), twice(b + 8), twice(b + 12)};
    __m256 const upper = rowsTimes(_mm256_loadu_ps(a), m);
    __m256 const lower = rowsTimes(_mm256_loadu_ps(a + 8), m);
    auto *const product = reinterpret_cast<float *>(out);
    _mm256_storeu_ps(product, upper);
    _mm256_storeu_ps(product + 8, lower);
}

void transform(float *out, std::size_t outStride, float const *in, std::size_t inStride, float const *matrix,
               std::size_t count)
{
    __m256 const m[4] = {twice(matrix), twice(matrix + 4), twice(matrix + 8), twice(matrix + 12)};
    // A load takes the float behind a point as well, so the last points go to the plain kernel.
    while (count > 2) {
        __m256 const points =
            _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(in)), _mm_loadu_ps(in + inStride), 1);
        __m256 const x = _mm256_mul_ps(_mm256_permute_ps(points, 0x00), m[0]);
        __m256 const y = _mm256_mul_ps(_mm256_permute_ps(points, 0x55), m[1]);
        __m256 const z = _mm256_mul_ps(_mm256_permute_ps(points, 0xAA), m[2]);
        __m256 const result = _mm256_add_ps(_mm256_add_ps(_mm256_add_ps(x, y), z), m[3]);
        _mm_storeu_ps(out, _mm256_castps256_ps128(result));
        _mm_storeu_ps(out + outStride, _mm256_extractf128_ps(result, 1));
        in += 2 * inStride;
        out += 2 * outStride;
        count -= 2;
    }
    d3dxKernelsBase.transform(out, outStride, in, inStride, matrix, count);
}

} // namespace

D3dxKernels const d3dxKernelsAvx2{multiply, transform};
