#pragma once

#include "System/System/export.h"

namespace Qel {

/// Improved gradient noise after K. Perlin, in the plane and in space, and fields of bytes baked from it.
///
/// Noise is 0 at whole coordinates, repeats every 256, and lies within about -1 to 1.
///
/// @code
/// unsigned char *const clouds = Perlin::createField(512, 512, 8); // 8 x 8 cells
/// ...
/// PoolHeap::std_free(clouds);
/// @endcode
///
/// Fields come from PoolHeap::std_alloc() and belong to the caller; null if there is no memory. A byte of a
/// field is (noise + 1) * 128, cut to an integer, of which the low eight bits are kept.
class QEL_API Perlin {
public:
    static float noise(float x, float y);          ///< noise in the plane
    static float noise(float x, float y, float z); ///< noise in space

    /// A field of @p rows times @p columns bytes, row by row.
    /// @param scale  cells across a square field: row i, column j is at (i, j) * scale / sqrt(rows * columns)
    static unsigned char *createField(unsigned int rows, unsigned int columns, unsigned int scale);

    /// The same with four bytes for each place: the field itself, and its octaves with 2, 4 and 8 times the
    /// cells, each by itself.
    static unsigned char *createFieldWithOctave123(unsigned int rows, unsigned int columns,
                                                   unsigned int scale);

    /// The same in space; the last index runs fastest.
    /// @param scale  cells across a cube: index (i, j, k) is at (i, j, k) * scale / sqrt(sqrt(A * B) * C)
    static unsigned char *createFieldWithOctave123(unsigned int sizeA, unsigned int sizeB, unsigned int sizeC,
                                                   unsigned int scale);

    /// The 256 values of the reference implementation, twice in a row.
    class QEL_API Perm {
    public:
        constexpr Perm();
        int operator[](int index) const { return m_values[index]; } ///< @param index  0 to 511

    private:
        int m_values[512];
    };
    static Perm const p;

protected:
    static float curve(float t) { return t * t * t * (t * (t * 6 - 15) + 10); } ///< 6 t^5 - 15 t^4 + 10 t^3
    static float lerp(float t, float a, float b) { return a + (b - a) * t; }

    /// @param t  with twelve bits behind the point
    static int lerp(int t, int a, int b) { return a + (((b - a) * t) >> 12); }

    static float grad(int hash, float x, float y, float z);
    static float grad(int hash, float x, float y) { return grad(hash, x, y, 0); }
};

} // namespace Qel
