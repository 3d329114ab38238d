#include "System/math/splineCR.h"

#include "System/math/lanes.h"

#include <algorithm>
#include <cmath>

namespace Qel {

namespace {

D3DXVECTOR3 const origin(0, 0, 0);

// Also the one for NaN.
float clamped(float t)
{
    return t > 0 ? std::min(t, 1.0F) : 0.0F;
}

} // namespace

constinit float const cSplineCR::mCoeffs[4][4] = {
    {2, -2, 1, 1},
    {-3, 3, -2, -1},
    {0, 0, 1, 0},
    {1, 0, 0, 0},
};

void cSplineCR::addValue(D3DXVECTOR3 const &point)
{
    points.push_back(point);
    tangents.push_back(origin);
    if (autoCalculate) {
        recalcTangents();
    }
}

void cSplineCR::updatePoint(unsigned short index, D3DXVECTOR3 const &point)
{
    if (index >= points.size()) {
        return;
    }
    points[index] = point;
    if (autoCalculate) {
        recalcTangents();
    }
}

D3DXVECTOR3 const &cSplineCR::at(std::vector<D3DXVECTOR3> const &values, std::size_t index) const
{
    return values.empty() ? origin : values[std::min(index, values.size() - 1)];
}

D3DXVECTOR3 const &cSplineCR::getValue(unsigned short index) const
{
    return at(points, index);
}

D3DXVECTOR3 const &cSplineCR::getTangent(unsigned short index) const
{
    return at(tangents, index);
}

D3DXVECTOR3 const &cSplineCR::getTangent(unsigned int index) const
{
    return at(tangents, index);
}

void cSplineCR::setTangent(unsigned int index, D3DXVECTOR3 const &tangent)
{
    if (index < tangents.size()) {
        tangents[index] = tangent;
    }
}

void cSplineCR::clear()
{
    points.clear();
    tangents.clear();
}

void cSplineCR::recalcTangents()
{
    std::size_t const count = points.size();
    if (count < 2) {
        return;
    }
    std::size_t const last = count - 1;
    for (std::size_t i = 1; i < last; ++i) {
        tangents[i] = (points[i + 1] - points[i - 1]) * 0.5F;
    }
    if (points.front() == points.back()) {
        tangents[0] = (points[1] - points[last - 1]) * 0.5F;
        tangents[last] = tangents[0];
    } else {
        tangents[0] = (points[1] - points[0]) * 0.5F;
        tangents[last] = (points[last] - points[last - 1]) * 0.5F;
    }
}

cSplineCR::Place cSplineCR::placeAt(float t) const
{
    if (points.empty()) {
        return {0, 0};
    }
    std::size_t const last = points.size() - 1;
    float const along = static_cast<float>(last) * clamped(t);
    std::size_t const index = std::min(static_cast<std::size_t>(along), last);
    return {index, along - static_cast<float>(index)};
}

D3DXVECTOR3 cSplineCR::interpolate(float t) const
{
    Place const place = placeAt(t);
    return interpolate(static_cast<unsigned int>(place.index), place.t);
}

D3DXVECTOR3 cSplineCR::interpolate(unsigned int index, float t) const
{
    t = clamped(t);
    if (std::size_t{index} + 1 >= points.size() || t == 0) {
        return at(points, index);
    }
    if (t == 1) {
        return points[index + 1];
    }
    return interpolate(points[index], tangents[index], points[index + 1], tangents[index + 1], t);
}

D3DXVECTOR3 cSplineCR::interpolate(D3DXVECTOR3 const &p0, D3DXVECTOR3 const &t0, D3DXVECTOR3 const &p1,
                                   D3DXVECTOR3 const &t1, float t)
{
    // D3DXVec4Transform() twice, by the basis and by the four rows: the same sums in the same order.
    Lanes const powers = Lanes::all(t * t * t) * Lanes::load(mCoeffs[0]) +
                         Lanes::all(t * t) * Lanes::load(mCoeffs[1]) +
                         Lanes::all(t) * Lanes::load(mCoeffs[2]) + Lanes::load(mCoeffs[3]);
    float weights[4];
    powers.store(weights);
    Lanes const position = Lanes::all(weights[0]) * lanesOf(p0, 1) + Lanes::all(weights[1]) * lanesOf(p1, 1) +
                           Lanes::all(weights[2]) * lanesOf(t0, 1) + Lanes::all(weights[3]) * lanesOf(t1, 1);
    float out[4];
    position.store(out);
    return out;
}

D3DXVECTOR3 cSplineCR::getTangentVector(float t) const
{
    Place const place = placeAt(t);
    std::size_t const index = place.index;
    float const f = place.t;
    if (index + 1 >= points.size() || f == 0) {
        return at(tangents, index);
    }
    D3DXVECTOR3 direction;
    if (index != 0 && index + 2 < points.size()) {
        D3DXVECTOR3 const &p0 = points[index - 1];
        D3DXVECTOR3 const &p1 = points[index];
        D3DXVECTOR3 const &p2 = points[index + 1];
        D3DXVECTOR3 const &p3 = points[index + 2];
        direction = ((p2 - p0) + (p0 * 2 - p1 * 5 + p2 * 4 - p3) * (2 * f) +
                     (p1 * 3 - p0 - p2 * 3 + p3) * (3 * f * f)) *
                    0.5F;
    } else {
        direction = tangents[index] + (tangents[index + 1] - tangents[index]) * f;
    }
    D3DXVec3Normalize(&direction, &direction);
    return direction;
}

float cSplineCR::approximateLength(unsigned int steps) const
{
    float const step = 1.0F / static_cast<float>(steps);
    float length = 0;
    D3DXVECTOR3 previous = at(points, 0);
    for (float t = step; t <= 1.0F;) {
        D3DXVECTOR3 const position = interpolate(t);
        D3DXVECTOR3 const chord = position - previous;
        length += std::sqrt(chord.x * chord.x + chord.y * chord.y + chord.z * chord.z);
        previous = position;
        float const next = t + step;
        if (next > t) {
            t = next;
        } else if (t < 1.0F) {
            t = 1.0F;
        } else {
            break;
        }
    }
    return length;
}

D3DXMATRIX cSplineCR::getCoeffMatrix()
{
    return &mCoeffs[0][0];
}

} // namespace Qel
