#pragma once

#include "Support/D3DX/d3dx9math.h"

#include <cstring>

// The inline parts of D3DXMATRIX. Included by d3dx9math.h; not for direct use.

inline D3DXMATRIX::D3DXMATRIX(float const *f)
{
    std::memcpy(m, f, sizeof m);
}

inline D3DXMATRIX::D3DXMATRIX(float f11, float f12, float f13, float f14, float f21, float f22, float f23,
                              float f24, float f31, float f32, float f33, float f34, float f41, float f42,
                              float f43, float f44)
    : _D3DMATRIX{{{f11, f12, f13, f14, f21, f22, f23, f24, f31, f32, f33, f34, f41, f42, f43, f44}}}
{
}

inline D3DXMATRIX &D3DXMATRIX::operator+=(D3DXMATRIX const &other)
{
    for (unsigned row = 0; row < 4; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            m[row][column] += other.m[row][column];
        }
    }
    return *this;
}

inline D3DXMATRIX &D3DXMATRIX::operator-=(D3DXMATRIX const &other)
{
    for (unsigned row = 0; row < 4; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            m[row][column] -= other.m[row][column];
        }
    }
    return *this;
}

inline D3DXMATRIX &D3DXMATRIX::operator*=(float s)
{
    for (auto &row : m) {
        for (float &element : row) {
            element *= s;
        }
    }
    return *this;
}

inline D3DXMATRIX D3DXMATRIX::operator-() const
{
    D3DXMATRIX result;
    for (unsigned row = 0; row < 4; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            result.m[row][column] = -m[row][column];
        }
    }
    return result;
}

inline int D3DXMATRIX::operator==(D3DXMATRIX const &other) const
{
    for (unsigned row = 0; row < 4; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            if (!(m[row][column] == other.m[row][column])) {
                return 0;
            }
        }
    }
    return 1;
}
