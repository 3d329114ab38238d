#pragma once

#include "System/Platform/renderSystem.h"

#include <vector>

/// What is drawn on: shapes far outside are cut here, since what draws in software counts in small numbers.
class Clipping {
public:
    Clipping(int width, int height);

    /// Does all of a shape lie near enough to be drawn as it is?
    bool isNear(Qel::RenderVertex const *vertices, std::size_t count) const;

    /// Cuts a polygon, convex or not.
    /// @param polygon  becomes what is left; empty for nothing, and for what is no number
    void cut(std::vector<Qel::RenderVertex> &polygon) const;

    /// Cuts a line. @return false if nothing of it is left
    bool cutLine(Qel::RenderVertex &from, Qel::RenderVertex &to) const;

private:
    struct Edge {
        float x, y, distance; // inside is x * px + y * py + distance >= 0
        float at(Qel::RenderVertex const &vertex) const { return x * vertex.x + y * vertex.y + distance; }
    };

    Edge m_edges[4];
    float m_right;
    float m_bottom;
};
