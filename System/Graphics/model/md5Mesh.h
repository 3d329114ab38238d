#pragma once

#include "Support/D3DX/d3dx9math.h"
#include "System/System/export.h"
#include "System/System/string.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Qel {

/// What drives a bone; the place of a value in MD5Bone::attributes.
enum eMD5Attribute : std::uint32_t {
    MD5_X = 0,
    MD5_Y = 1,
    MD5_Z = 2,
    MD5_YAW = 3,
    MD5_PITCH = 4,
    MD5_ROLL = 5,
    MD5_ATTRIBUTES = 6 ///< how many there are
};

/// A bone of a mesh.
struct QEL_API MD5Bone {
    String name;
    String parent;     ///< its name; empty for a root
    D3DXMATRIX matrix; ///< the default pose's rotation; after MD5Anim::playAnimation() the pose
    D3DXVECTOR3 position{0, 0, 0};
    std::uint16_t parentIndex = 0;         ///< in MD5Mesh::bones, or the number of bones for a root
    float attributes[MD5_ATTRIBUTES] = {}; ///< values of the channels; angles in radians

    MD5Bone() { D3DXMatrixIdentity(&matrix); } ///< what a file does not give of the matrix is the identity's
};

struct MD5Vertex {
    float u = 0.0f;
    float v = 0.0f;
    std::uint16_t firstWeight = 0; ///< in MD5Mesh::weights
    std::uint16_t weightCount = 0;
    D3DXVECTOR3 position{0, 0, 0}; ///< as MD5Mesh::defaultPose() makes it
};

struct MD5Triangle {
    std::uint16_t index = 0; ///< its number in the file
    std::uint16_t a = 0;     ///< vertices
    std::uint16_t b = 0;
    std::uint16_t c = 0;
};

/// A vertex's share in a bone.
struct MD5Weight {
    std::uint16_t index = 0; ///< its number in the file
    std::uint16_t bone = 0;
    float weight = 0.0f;
    D3DXVECTOR3 offset{0, 0, 0}; ///< of the vertex, in the bone's space
};

/// A skeletal model: one mesh with its bones. MD5Loader reads and writes it, MD5Anim poses it.
///
/// Nothing here draws or skins: it ends at the bones' matrices and positions. Docs/models.md shows how a host
/// goes on from there.
///
/// @par Limits  65 535 bones; indices have 16 bits.
class QEL_API MD5Mesh {
public:
    MD5Mesh();
    ~MD5Mesh();
    MD5Mesh(MD5Mesh const &);
    MD5Mesh &operator=(MD5Mesh const &);

    /// The number of bones; of a longer list the first 65 535 count.
    unsigned short getBoneCount() const
    {
        return static_cast<unsigned short>(std::min<std::size_t>(bones.size(), 0xFFFF));
    }

    /// The first bone of a name. @return the number of bones if there is none
    unsigned short getBoneIndex(String name) const;
    bool isValidBoneIndex(unsigned short index) const { return index < getBoneCount(); }

    void buildHierarchy(); ///< works out each bone's parentIndex from the name of its parent

    /// Puts every vertex at the sum of its bones' positions, each times its weight. Weights and bones that
    /// are not there are passed over. Where vertices share their weights many times over, what lies beyond
    /// sixteen times the mesh's own size is left out.
    void defaultPose();

    void resetAttrib();       ///< zeroes the attributes of all bones
    void debugInfo() const {} ///< kept for callers; does nothing

    std::uint16_t version = 0;
    String shader; ///< the material's name
    String commandLine;
    std::vector<MD5Bone> bones;
    std::vector<MD5Vertex> vertices;
    std::vector<MD5Triangle> triangles;
    std::vector<MD5Weight> weights;
};

} // namespace Qel
