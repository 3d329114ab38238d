#pragma once

#include "System/Graphics/model/md5Anim.h"
#include "System/Graphics/model/md5Mesh.h"

#include <vector>

/// A model that is posed and skinned: what the library leaves to a host.
///
/// The files of this host have bones where they stand in the model, with y up; poses have z up. A bone's
/// matrix turns what is a column, so that a child's turn comes before its parent's.
class Figure {
public:
    explicit Figure(Qel::MD5Mesh const &mesh);

    /// Poses the bones for a time. Their positions start from those of the file each time.
    void pose(Qel::MD5Anim &animation, float time);

    Qel::MD5Mesh const &mesh() const { return m_mesh; }
    std::vector<D3DXVECTOR3> const &joints() const { return m_joints; } ///< where the bones are in the pose
    std::vector<D3DXVECTOR3> skin() const;                              ///< where the vertices are in it

private:
    Qel::MD5Mesh m_mesh;
    std::vector<D3DXVECTOR3> m_rest; // the bones' positions as the file has them
    std::vector<D3DXVECTOR3> m_joints;
};
