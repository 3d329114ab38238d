#pragma once

#include "Support/export.h"

/// Three floats, x, y, z.
struct _D3DVECTOR {
    float x;
    float y;
    float z;
};

/// A vector of three floats.
struct D3DXVECTOR3 : _D3DVECTOR {
    D3DXVECTOR3() {} // leaves the floats as they are
    D3DXVECTOR3(float fx, float fy, float fz) : _D3DVECTOR{fx, fy, fz} {}
};

/// Sixteen floats, row by row.
struct _D3DMATRIX {
    float m[4][4];
};

/// A matrix of four rows and four columns.
struct D3DXMATRIX : _D3DMATRIX {
    D3DXMATRIX() {} // leaves the floats as they are

    float &operator()(unsigned row, unsigned column) { return m[row][column]; }
    float operator()(unsigned row, unsigned column) const { return m[row][column]; }
};
