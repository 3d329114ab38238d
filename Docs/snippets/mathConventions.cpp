#include "System/math/3D/Frustum.h"
#include "System/math/3D/boxBatch.h"
#include "System/math/math.h"

#include <bit>
#include <vector>

int main()
{
    Qel::cMath::init(true, true, false, false, false);

    // A camera at (0, 0, 10) that looks at the origin, and a lens of 90 degrees with depth from 0 to 1.
    D3DXVECTOR3 const eye(0, 0, 10), at(0, 0, 0), up(0, 1, 0);
    D3DXMATRIX view;
    D3DXMatrixLookAtRH(&view, &eye, &at, &up);
    float const nearZ = 1, farZ = 100, range = farZ / (nearZ - farZ);
    D3DXMATRIX const lens(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, range, -1, 0, 0, range * nearZ, 0);

    Qel::Frustum frustum;
    frustum.setFromMatrix(view * lens); // the view first, then the lens

    std::vector<Qel::cBoundingBoxAA> boxes;
    for (int x = -50; x < 50; ++x) {
        D3DXVECTOR3 const corner(static_cast<float>(x), 0, 0);
        boxes.emplace_back(corner, corner + D3DXVECTOR3(1, 1, 1));
    }
    std::vector<std::uint32_t> seen((boxes.size() + 31) / 32);
    std::size_t const count = Qel::cBoxBatch::intersects(frustum, boxes.data(), boxes.size(), seen.data());

    std::size_t visited = 0;
    for (std::size_t word = 0; word < seen.size(); ++word) {
        for (std::uint32_t bits = seen[word]; bits != 0; bits &= bits - 1) {
            std::size_t const box = word * 32 + static_cast<std::size_t>(std::countr_zero(bits));
            visited += frustum.intersects(boxes[box]) ? 1 : 0;
        }
    }
    return count == 22 && visited == count ? 0 : 1;
}
