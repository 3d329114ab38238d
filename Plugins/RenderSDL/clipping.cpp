#include "clipping.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace {

constexpr float margin = 1024; // pixels around what is drawn on

Qel::RenderVertex between(Qel::RenderVertex const &from, Qel::RenderVertex const &to, float share)
{
    auto const mixed = [share](float a, float b) { return a + (b - a) * share; };
    std::uint32_t color = 0;
    for (unsigned int shift = 0; shift < 32; shift += 8) {
        auto const channel = [shift](Qel::Color of) { return static_cast<float>(of.value >> shift & 255); };
        color |= static_cast<std::uint32_t>(mixed(channel(from.color), channel(to.color)) + 0.5f) << shift;
    }
    return {mixed(from.x, to.x), mixed(from.y, to.y), mixed(from.u, to.u), mixed(from.v, to.v), color};
}

bool isNumber(Qel::RenderVertex const &vertex)
{
    constexpr float most = 1e15f; // beyond, the sums below are no numbers any more
    return std::fabs(vertex.x) < most && std::fabs(vertex.y) < most && std::isfinite(vertex.u) &&
           std::isfinite(vertex.v);
}

} // namespace

Clipping::Clipping(int width, int height)
    : m_edges{{1, 0, 1}, {-1, 0, static_cast<float>(width)}, {0, 1, 1}, {0, -1, static_cast<float>(height)}},
      m_right(static_cast<float>(width) + margin), m_bottom(static_cast<float>(height) + margin)
{
}

bool Clipping::isNear(Qel::RenderVertex const *vertices, std::size_t count) const
{
    for (std::size_t i = 0; i < count; ++i) {
        Qel::RenderVertex const &vertex = vertices[i];
        if (!(vertex.x > -margin && vertex.x < m_right && vertex.y > -margin && vertex.y < m_bottom) ||
            !isNumber(vertex)) {
            return false;
        }
    }
    return true;
}

// Edge by edge, after Sutherland and Hodgman (1974).
void Clipping::cut(std::vector<Qel::RenderVertex> &polygon) const
{
    for (Qel::RenderVertex const &vertex : polygon) {
        if (!isNumber(vertex)) {
            polygon.clear();
            return;
        }
    }
    std::vector<Qel::RenderVertex> left;
    for (Edge const &edge : m_edges) {
        left.clear();
        for (std::size_t i = 0; i < polygon.size(); ++i) {
            Qel::RenderVertex const &from = polygon[i];
            Qel::RenderVertex const &to = polygon[(i + 1) % polygon.size()];
            float const before = edge.at(from);
            float const after = edge.at(to);
            if (before >= 0) {
                left.push_back(from);
            }
            if ((before >= 0) != (after >= 0)) {
                left.push_back(between(from, to, before / (before - after)));
            }
        }
        polygon.swap(left);
    }
}

bool Clipping::cutLine(Qel::RenderVertex &from, Qel::RenderVertex &to) const
{
    if (!isNumber(from) || !isNumber(to)) {
        return false;
    }
    for (Edge const &edge : m_edges) {
        float const before = edge.at(from);
        float const after = edge.at(to);
        if (before < 0 && after < 0) {
            return false;
        }
        if (before < 0) {
            from = between(from, to, before / (before - after));
        } else if (after < 0) {
            to = between(to, from, after / (after - before));
        }
    }
    return true;
}
