#pragma once

#include "Support/D3DX/d3dx9math.h"

namespace Qel {

class cBoxRay;
class cRectRay;
class cBoundingBoxAA;

/// A beam as the tests see it: looking along it from its origin. Shared by the tests of one box and of many.
struct BeamView {
    D3DXMATRIX view; ///< right-handed: the beam runs along negative z
    D3DXVECTOR3 origin;
    D3DXVECTOR3 direction;
    float sizeX;  ///< half the width
    float sizeY;  ///< half the height
    float length; ///< of the beam, if @ref limited
    bool limited; ///< whether the length counts

    explicit BeamView(cBoxRay const &beam);
    explicit BeamView(cRectRay const &beam);

    bool intersects(D3DXVECTOR3 const *points, unsigned count) const;
    bool intersects(cBoundingBoxAA const &box) const; ///< the answer for its eight corners

private:
    void look(D3DXVECTOR3 const &up);
    bool inFront(D3DXVECTOR3 const *points, unsigned count) const;
};

} // namespace Qel
