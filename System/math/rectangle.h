#pragma once

#include "Support/D3DX/d3dx9math.h"
#include "System/System/export.h"

#include <vector>

namespace Qel {

/// A rectangle on a screen or an image, and the base of a box.
///
/// Left is x, top is y, right is x + width and bottom is y + height. Nothing keeps the size from being
/// negative. All sums are plain float arithmetic: corners beyond the range of float are infinite.
class QEL_API cRectangle {
public:
    float x;
    float y;
    float width;
    float height;

    cRectangle() {} // leaves the fields as they are
    cRectangle(float newX, float newY, float newWidth, float newHeight)
        : x(newX), y(newY), width(newWidth), height(newHeight)
    {
    }

    void reset() { set(0, 0, 0, 0); } ///< a point at the origin, not an empty set
    void set(float newX, float newY, float newWidth, float newHeight)
    {
        *this = cRectangle(newX, newY, newWidth, newHeight);
    }
    void setPosition(float newX, float newY)
    {
        x = newX;
        y = newY;
    }
    void setSize(float newWidth, float newHeight)
    {
        width = newWidth;
        height = newHeight;
    }

    D3DXVECTOR2 getPosition() const { return {x, y}; }
    D3DXVECTOR2 getDimension() const { return {width, height}; }
    float getArea() const { return width * height; }

    bool isSizeEqual(cRectangle const &other) const { return width == other.width && height == other.height; }
    /// True if this one is strictly smaller on both axes.
    bool isSizeSmaller(cRectangle const &other) const { return other.width > width && other.height > height; }

    /// @name Inside: with the edges
    /// @{
    bool isInside(float px, float py) const;
    bool isInside(cRectangle const &other) const;                ///< all four corners of @p other
    bool isInside(std::vector<D3DXVECTOR2> const &points) const; ///< all points; an empty list is inside
    /// @}

    /// @name Overlap of ranges: without the edges
    /// True if the range of the points and the rectangle's own overlap on x and on y, each by itself. No
    /// single point needs to be inside. An empty list gives false.
    /// @{
    bool intersects(std::vector<D3DXVECTOR2> const &points) const;
    bool intersects(cRectangle const &other) const; ///< with the four corners of @p other
    /// @}

    void addPoint(D3DXVECTOR2 const &p);    ///< grows to take the point in
    void addPoint(cRectangle const &other); ///< grows to take the four corners in
    /// Clamps each edge into the range of @p other. One that lies wholly outside ends with a width or height
    /// of 0 on the nearest edge of @p other.
    void clip(cRectangle const &other);
};

} // namespace Qel
