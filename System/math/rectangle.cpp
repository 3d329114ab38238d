#include "System/math/rectangle.h"

#include <algorithm>
#include <array>

namespace Qel {

namespace {

std::array<D3DXVECTOR2, 4> cornersOf(cRectangle const &r)
{
    float const right = r.x + r.width;
    float const bottom = r.y + r.height;
    return {{{r.x, r.y}, {right, r.y}, {r.x, bottom}, {right, bottom}}};
}

// First the lower end, then the upper one: with a range turned inside out the upper one wins.
float clamped(float value, float low, float high)
{
    return std::min(std::max(value, low), high);
}

template <class Points>
bool overlaps(cRectangle const &r, Points const &points)
{
    float const right = r.x + r.width;
    float const bottom = r.y + r.height;
    unsigned mask = 0;
    for (D3DXVECTOR2 const &p : points) {
        mask |= (p.x > r.x ? 1u : 0u) | (p.y > r.y ? 2u : 0u) | (right > p.x ? 4u : 0u) |
                (bottom > p.y ? 8u : 0u);
    }
    return mask == 15;
}

} // namespace

bool cRectangle::isInside(float px, float py) const
{
    return x <= px && px <= x + width && y <= py && py <= y + height;
}

bool cRectangle::isInside(cRectangle const &other) const
{
    auto const corners = cornersOf(other);
    return std::all_of(corners.begin(), corners.end(), [this](auto const &p) { return isInside(p.x, p.y); });
}

bool cRectangle::isInside(std::vector<D3DXVECTOR2> const &points) const
{
    return std::all_of(points.begin(), points.end(), [this](auto const &p) { return isInside(p.x, p.y); });
}

bool cRectangle::intersects(std::vector<D3DXVECTOR2> const &points) const
{
    return overlaps(*this, points);
}

bool cRectangle::intersects(cRectangle const &other) const
{
    return overlaps(*this, cornersOf(other));
}

void cRectangle::addPoint(D3DXVECTOR2 const &p)
{
    float const right = x + width;
    float const bottom = y + height;
    x = std::min(x, p.x);
    y = std::min(y, p.y);
    width = std::max(p.x, right) - x;
    height = std::max(p.y, bottom) - y;
}

void cRectangle::addPoint(cRectangle const &other)
{
    for (D3DXVECTOR2 const &p : cornersOf(other)) {
        addPoint(p);
    }
}

void cRectangle::clip(cRectangle const &other)
{
    float const otherRight = other.x + other.width;
    float const otherBottom = other.y + other.height;
    float const left = clamped(x, other.x, otherRight);
    float const right = clamped(x + width, other.x, otherRight);
    float const top = clamped(y, other.y, otherBottom);
    float const bottom = clamped(y + height, other.y, otherBottom);
    *this = {left, top, right - left, bottom - top};
}

} // namespace Qel
