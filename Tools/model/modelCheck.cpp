#include "Tools/model/modelCheck.h"

#include <cmath>
#include <cstdio>
#include <set>

using namespace Qel;

namespace {

std::string numbered(char const *what, std::size_t index)
{
    return std::string(what) + " " + std::to_string(index);
}

void checkBones(MD5Mesh const &mesh, std::vector<std::string> &findings)
{
    std::set<std::string> names;
    for (std::size_t i = 0; i < mesh.bones.size(); ++i) {
        MD5Bone const &bone = mesh.bones[i];
        std::string const own = numbered("bone", i) + " '" + bone.name.c_str() + "'";
        if (bone.name.empty()) {
            findings.push_back(numbered("bone", i) + " has no name");
        } else if (!names.insert(bone.name.c_str()).second) {
            findings.push_back(own + " has the name of another one");
        }
        if (bone.parent.empty()) {
            continue;
        }
        std::string const parent = std::string("its parent '") + bone.parent.c_str() + "'";
        if (!mesh.isValidBoneIndex(bone.parentIndex)) {
            findings.push_back(own + ": " + parent + " is not there");
        } else if (bone.parentIndex >= i) {
            findings.push_back(own + ": " + parent + " stands behind it");
        }
    }
}

void checkVertices(MD5Mesh const &mesh, std::vector<std::string> &findings)
{
    constexpr double tolerance = 0.001;
    for (std::size_t i = 0; i < mesh.vertices.size(); ++i) {
        MD5Vertex const &vertex = mesh.vertices[i];
        std::size_t const end = std::size_t{vertex.firstWeight} + vertex.weightCount;
        if (end > mesh.weights.size()) {
            findings.push_back(numbered("vertex", i) + " wants weights up to " + std::to_string(end) +
                               " of " + std::to_string(mesh.weights.size()));
            continue;
        }
        double sum = 0;
        for (std::size_t w = vertex.firstWeight; w < end; ++w) {
            sum += static_cast<double>(mesh.weights[w].weight);
        }
        if (!(std::fabs(sum - 1) <= tolerance)) {
            char text[64];
            std::snprintf(text, sizeof text, "its weights add up to %g", sum);
            findings.push_back((numbered("vertex", i) + ": ").append(text));
        }
    }
}

} // namespace

ModelText modelTextOf(std::string_view text)
{
    if (text.find("MD5Version") == std::string_view::npos) {
        return ModelText::NONE;
    }
    return text.find("numchannels") != std::string_view::npos ? ModelText::ANIMATION : ModelText::MESH;
}

std::vector<std::string> checkModel(MD5Mesh const &mesh)
{
    std::vector<std::string> findings;
    if (mesh.bones.empty()) {
        findings.emplace_back("there are no bones");
    }
    checkBones(mesh, findings);
    checkVertices(mesh, findings);
    for (std::size_t i = 0; i < mesh.weights.size(); ++i) {
        if (!mesh.isValidBoneIndex(mesh.weights[i].bone)) {
            findings.push_back(numbered("weight", i) + ": there is no " +
                               numbered("bone", mesh.weights[i].bone));
        }
    }
    for (std::size_t i = 0; i < mesh.triangles.size(); ++i) {
        for (std::uint16_t const corner : {mesh.triangles[i].a, mesh.triangles[i].b, mesh.triangles[i].c}) {
            if (corner >= mesh.vertices.size()) {
                findings.push_back(numbered("triangle", i) + ": there is no " + numbered("vertex", corner));
            }
        }
    }
    return findings;
}

std::vector<std::string> checkAnimation(MD5Anim const &animation)
{
    std::vector<std::string> findings;
    if (animation.channels.empty()) {
        findings.emplace_back("there are no channels");
    }
    for (std::size_t i = 0; i < animation.channels.size(); ++i) {
        MD5Channel const &channel = animation.channels[i];
        std::string const own = numbered("channel", i) + " of '" + channel.joint.c_str() + "'";
        if (channel.keys.empty()) {
            findings.push_back(own + " has no keys");
        }
        if (!(channel.endTime > channel.startTime)) {
            findings.push_back(own + " ends before it starts");
        }
    }
    return findings;
}

std::vector<std::string> channelsWithoutBone(MD5Anim const &animation, MD5Mesh const &mesh)
{
    std::vector<std::string> findings;
    for (std::size_t i = 0; i < animation.channels.size(); ++i) {
        String const &joint = animation.channels[i].joint;
        if (!mesh.isValidBoneIndex(mesh.getBoneIndex(joint))) {
            findings.push_back(numbered("channel", i) + ": there is no bone '" + joint.c_str() + "'");
        }
    }
    return findings;
}
