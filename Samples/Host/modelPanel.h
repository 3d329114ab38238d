#pragma once

#include "figure.h"
#include "picture.h"

/// A field of a picture in which models stand.
class ModelPanel {
public:
    /// @param middle, ground  where a model's origin is, in pixels of the picture
    /// @param scale           pixels for a unit
    ModelPanel(Picture &picture, float middle, float ground, float scale)
        : m_picture(picture), m_x(middle), m_y(ground), m_scale(scale)
    {
    }

    void triangles(Qel::MD5Mesh const &mesh, std::vector<D3DXVECTOR3> const &places, Picture::Ink ink);
    void sticks(Figure const &figure, Picture::Ink stick = {20, 60, 140}, Picture::Ink joint = {200, 60, 30});

    static float sizeOf(Qel::MD5Mesh const &mesh); ///< the farthest that a bone is along an axis, above 0

private:
    void line(D3DXVECTOR3 const &from, D3DXVECTOR3 const &to, float width, Picture::Ink ink);

    Picture &m_picture;
    float m_x;
    float m_y;
    float m_scale;
};
