#include "modelPanel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace {

// Two of the three coordinates of a place, seen from ahead and the side, with z up.
std::array<float, 2> seen(D3DXVECTOR3 const &place)
{
    constexpr float angle = 0.9f;
    return {place.x * std::cos(angle) + place.y * std::sin(angle), place.z};
}

} // namespace

void ModelPanel::line(D3DXVECTOR3 const &from, D3DXVECTOR3 const &to, float width, Picture::Ink ink)
{
    auto const [x1, y1] = seen(from);
    auto const [x2, y2] = seen(to);
    m_picture.line(m_x + x1 * m_scale, m_y - y1 * m_scale, m_x + x2 * m_scale, m_y - y2 * m_scale, width,
                   ink);
}

void ModelPanel::triangles(Qel::MD5Mesh const &mesh, std::vector<D3DXVECTOR3> const &places, Picture::Ink ink)
{
    for (Qel::MD5Triangle const &triangle : mesh.triangles) {
        if (std::max({triangle.a, triangle.b, triangle.c}) < places.size()) {
            line(places[triangle.a], places[triangle.b], 1, ink);
            line(places[triangle.b], places[triangle.c], 1, ink);
            line(places[triangle.c], places[triangle.a], 1, ink);
        }
    }
}

void ModelPanel::sticks(Figure const &figure, Picture::Ink stick, Picture::Ink joint)
{
    for (std::size_t i = 0; i < figure.joints().size(); ++i) {
        if (std::size_t const parent = figure.mesh().bones[i].parentIndex; parent < figure.joints().size()) {
            line(figure.joints()[parent], figure.joints()[i], 4, stick);
        }
    }
    for (D3DXVECTOR3 const &place : figure.joints()) {
        line(place, place, 6, joint);
    }
}

float ModelPanel::sizeOf(Qel::MD5Mesh const &mesh)
{
    float size = 1e-6f;
    for (Qel::MD5Bone const &bone : mesh.bones) {
        size =
            std::max({size, std::abs(bone.position.x), std::abs(bone.position.y), std::abs(bone.position.z)});
    }
    return size;
}
