#include "Support/D3DX/d3dx9kernels.h"

#include <cstring>

void d3dxMultiplyBase(D3DXMATRIX *out, D3DXMATRIX const *left, D3DXMATRIX const *right)
{
    auto const *const a = reinterpret_cast<float const *>(left);
    auto const *const b = reinterpret_cast<float const *>(right);
    float product[16];
    for (int row = 0; row < 16; row += 4) {
        for (int column = 0; column < 4; ++column) {
            product[row + column] = a[row] * b[column] + a[row + 1] * b[4 + column] +
                                    a[row + 2] * b[8 + column] + a[row + 3] * b[12 + column];
        }
    }
    std::memcpy(reinterpret_cast<float *>(out), product, sizeof product);
}

namespace {

void transform(float *out, std::size_t outStride, float const *in, std::size_t inStride, float const *matrix,
               std::size_t count)
{
    float m[16]; // a store to out could otherwise change the matrix as far as the compiler can tell
    std::memcpy(m, matrix, sizeof m);
    for (; count > 0; --count) {
        float result[4];
        for (int column = 0; column < 4; ++column) {
            result[column] =
                in[0] * m[column] + in[1] * m[4 + column] + in[2] * m[8 + column] + m[12 + column];
        }
        std::memcpy(out, result, sizeof result);
        in += inStride;
        out += outStride;
    }
}

} // namespace

D3dxKernels const d3dxKernelsBase{d3dxMultiplyBase, transform};
