#pragma once

#include "Support/D3DX/d3dx9math.h"

#include <gtest/gtest.h>

inline void expectNear(D3DXVECTOR3 const &actual, D3DXVECTOR3 const &expected, float tolerance)
{
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
    EXPECT_NEAR(actual.z, expected.z, tolerance);
}

inline void expectNear(float const *actual, float const *expected, unsigned count, float tolerance)
{
    for (unsigned i = 0; i < count; ++i) {
        EXPECT_NEAR(actual[i], expected[i], tolerance) << i;
    }
}
