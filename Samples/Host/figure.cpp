#include "figure.h"

#include <algorithm>
#include <cstddef>

namespace {

D3DXVECTOR3 turned(D3DXMATRIX const &m, D3DXVECTOR3 const &v)
{
    return {m._11 * v.x + m._12 * v.y + m._13 * v.z, m._21 * v.x + m._22 * v.y + m._23 * v.z,
            m._31 * v.x + m._32 * v.y + m._33 * v.z};
}

} // namespace

Figure::Figure(Qel::MD5Mesh const &mesh) : m_mesh(mesh), m_joints(mesh.bones.size())
{
    for (Qel::MD5Bone const &bone : mesh.bones) {
        m_rest.push_back(bone.position);
    }
}

void Figure::pose(Qel::MD5Anim &animation, float time)
{
    for (std::size_t i = 0; i < m_rest.size(); ++i) {
        m_mesh.bones[i].position = m_rest[i];
    }
    animation.playAnimation(m_mesh, time);
    for (std::size_t i = 0; i < m_rest.size(); ++i) {
        std::size_t const parent = m_mesh.bones[i].parentIndex;
        // A root stands where it does, but with z up. A parent behind its child has no place yet.
        m_joints[i] = parent < i
                          ? m_joints[parent] + turned(m_mesh.bones[parent].matrix, m_rest[i] - m_rest[parent])
                          : D3DXVECTOR3(m_rest[i].x, -m_rest[i].z, m_rest[i].y);
    }
}

std::vector<D3DXVECTOR3> Figure::skin() const
{
    std::vector<D3DXVECTOR3> places;
    for (Qel::MD5Vertex const &vertex : m_mesh.vertices) {
        D3DXVECTOR3 sum(0, 0, 0);
        std::size_t const end =
            std::min(m_mesh.weights.size(), std::size_t{vertex.firstWeight} + vertex.weightCount);
        for (std::size_t i = vertex.firstWeight; i < end; ++i) {
            Qel::MD5Weight const &weight = m_mesh.weights[i];
            if (m_mesh.isValidBoneIndex(weight.bone)) {
                sum += (m_joints[weight.bone] + turned(m_mesh.bones[weight.bone].matrix, weight.offset)) *
                       weight.weight;
            }
        }
        places.push_back(sum);
    }
    return places;
}
