#pragma once

#include <cstddef>

struct D3DXMATRIX;

// The kernels that gain from a wider processor, over plain floats, so that no inline function is compiled for
// a wider processor than the rest of the library. All levels give the same bits.

/// One level.
struct D3dxKernels {
    /// @p out may be @p a or @p b.
    void (*multiply)(D3DXMATRIX *out, D3DXMATRIX const *a, D3DXMATRIX const *b);
    /// Points of three floats to results of four, strides in floats. @p out may be @p in where the result's
    /// stride is no larger than the point's.
    void (*transform)(float *out, std::size_t outStride, float const *in, std::size_t inStride,
                      float const *matrix, std::size_t count);
};

void d3dxMultiplyBase(D3DXMATRIX *out, D3DXMATRIX const *a, D3DXMATRIX const *b);
extern D3dxKernels const d3dxKernelsBase;
#if defined(__x86_64__)
extern D3dxKernels const d3dxKernelsAvx2;
extern D3dxKernels const d3dxKernelsAvx512;
#endif
