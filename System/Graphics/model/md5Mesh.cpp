#include "System/Graphics/model/md5Mesh.h"

#include "System/Graphics/model/boneNames.h"

#include <algorithm>
#include <iterator>

namespace Qel {

MD5Mesh::MD5Mesh() = default;
MD5Mesh::~MD5Mesh() = default;
MD5Mesh::MD5Mesh(MD5Mesh const &) = default;
MD5Mesh &MD5Mesh::operator=(MD5Mesh const &) = default;

unsigned short MD5Mesh::getBoneIndex(String name) const
{
    auto const end = bones.begin() + getBoneCount();
    auto const place =
        std::find_if(bones.begin(), end, [&](MD5Bone const &bone) { return bone.name == name; });
    return static_cast<unsigned short>(place - bones.begin());
}

void MD5Mesh::buildHierarchy()
{
    BoneNames const names(*this);
    for (MD5Bone &bone : bones) {
        // A damaged file leaves bones without a name; they are nobody's parent.
        bone.parentIndex = bone.parent.empty() ? getBoneCount() : names.find(bone.parent);
    }
}

void MD5Mesh::defaultPose()
{
    // An honest mesh has a weight for one vertex; one that lies must not make work without end.
    constexpr std::size_t smallMesh = 1 << 20;
    std::size_t budget = smallMesh + 16 * (vertices.size() + weights.size());
    for (MD5Vertex &vertex : vertices) {
        vertex.position = D3DXVECTOR3(0, 0, 0);
        std::size_t const first = std::min<std::size_t>(vertex.firstWeight, weights.size());
        std::size_t const count = std::min({std::size_t{vertex.weightCount}, weights.size() - first, budget});
        budget -= count;
        for (std::size_t i = first; i < first + count; ++i) {
            if (isValidBoneIndex(weights[i].bone)) {
                vertex.position += bones[weights[i].bone].position * weights[i].weight;
            }
        }
    }
}

void MD5Mesh::resetAttrib()
{
    for (MD5Bone &bone : bones) {
        std::fill(std::begin(bone.attributes), std::end(bone.attributes), 0.0f);
    }
}

} // namespace Qel
