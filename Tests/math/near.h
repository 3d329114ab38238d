#pragma once

#include "Support/D3DX/d3dx9math.h"

#include <gtest/gtest.h>

inline void expectNear(D3DXVECTOR3 const &actual, D3DXVECTOR3 const &expected, float tolerance)
{
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
    EXPECT_NEAR(actual.z, expected.z, tolerance);
}
