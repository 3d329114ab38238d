#include "System/Graphics/model/md5Anim.h"
#include "System/Graphics/model/md5Loader.h"
#include "System/Graphics/model/md5Mesh.h"

#include <cmath>
#include <cstdio>
#include <vector>

// What is a column is turned, so the matrix is the left one.
D3DXVECTOR3 turned(D3DXMATRIX const &m, D3DXVECTOR3 const &v)
{
    return {m._11 * v.x + m._12 * v.y + m._13 * v.z, m._21 * v.x + m._22 * v.y + m._23 * v.z,
            m._31 * v.x + m._32 * v.y + m._33 * v.z};
}

// Poses the mesh and returns where its vertices are. The bones of this host's files stand where they are in
// the model, unturned, with y up, and parents before their children.
std::vector<D3DXVECTOR3> skin(Qel::MD5Mesh &mesh, Qel::MD5Anim &anim, float time)
{
    std::vector<D3DXVECTOR3> rest;
    for (Qel::MD5Bone const &bone : mesh.bones) {
        rest.push_back(bone.position);
    }
    anim.playAnimation(mesh, time); // adds to the positions...
    for (std::size_t i = 0; i < rest.size(); ++i) {
        mesh.bones[i].position = rest[i]; // ...which start anew each time
    }

    std::vector<D3DXVECTOR3> joints;
    for (std::size_t i = 0; i < rest.size(); ++i) {
        unsigned const parent = mesh.bones[i].parentIndex;
        joints.push_back(parent < i
                             ? joints[parent] + turned(mesh.bones[parent].matrix, rest[i] - rest[parent])
                             : D3DXVECTOR3(rest[i].x, -rest[i].z, rest[i].y)); // z is up in poses
    }

    std::vector<D3DXVECTOR3> places;
    for (Qel::MD5Vertex const &vertex : mesh.vertices) {
        D3DXVECTOR3 sum(0, 0, 0);
        std::size_t const end = std::size_t{vertex.firstWeight} + vertex.weightCount;
        for (std::size_t i = vertex.firstWeight; i < end && i < mesh.weights.size(); ++i) {
            Qel::MD5Weight const &weight = mesh.weights[i];
            if (mesh.isValidBoneIndex(weight.bone)) { // files may hold anything
                sum += (joints[weight.bone] + turned(mesh.bones[weight.bone].matrix, weight.offset)) *
                       weight.weight;
            }
        }
        places.push_back(sum);
    }
    return places;
}

int main()
{
    Qel::MD5Mesh mesh; // an upper arm with a forearm; one vertex at the wrist
    mesh.bones.resize(2);
    mesh.bones[0].name = "arm";
    mesh.bones[1].name = "forearm";
    mesh.bones[1].parent = "arm";
    mesh.bones[1].position = {0, 1, 0};
    mesh.weights.push_back({0, 1, 1.0f, {0, 1, 0}});
    mesh.vertices.push_back({0, 0, 0, 1, {0, 0, 0}});

    Qel::MD5Anim bend;
    Qel::MD5Channel &channel = bend.channels.emplace_back();
    channel.joint = "forearm";
    channel.attribute = Qel::MD5_ROLL;
    channel.endTime = 2;
    channel.keys = {0, -1.5707964f}; // one half of the time straight, the other bent ahead
    bend.precalc();

    // Usual hosts load all this: loadModel() builds the hierarchy, loadAnim() works out the times.
    Qel::MD5Loader loader;
    loader.saveModel("arm.md5mesh", mesh);
    loader.loadModel("arm.md5mesh", mesh);
    std::remove("arm.md5mesh");
    bend.connectBones(mesh);

    D3DXVECTOR3 const straight = skin(mesh, bend, 0.5f)[0];
    D3DXVECTOR3 const bent = skin(mesh, bend, 1.9f)[0];
    std::printf("(%.1f %.1f %.1f), then (%.1f %.1f %.1f)\n", static_cast<double>(straight.x),
                static_cast<double>(straight.y), static_cast<double>(straight.z), static_cast<double>(bent.x),
                static_cast<double>(bent.y), static_cast<double>(bent.z));
    bool const right =
        std::abs(straight.z - 2) < 1e-5f && std::abs(bent.z - 1) < 1e-5f && std::abs(bent.y + 1) < 1e-5f;
    return right ? 0 : 1;
}
