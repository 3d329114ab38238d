#include "modelScreen.h"

#include "figure.h"
#include "modelPanel.h"

#include "System/Graphics/model/md5Loader.h"
#include "Tools/picture/pngFile.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

constexpr int posesShown = 8; // of each animation
constexpr int panelWidth = 170;
constexpr int panelHeight = 330;
constexpr Picture::Ink meshInk{190, 195, 200};
constexpr Picture::Ink defaultInk{60, 130, 70};

struct Shown {
    std::string name;
    Qel::MD5Anim animation;
};

float timeOf(Qel::MD5Anim const &animation, int pose)
{
    return animation.getStartTime() +
           animation.getDuration() * (static_cast<float>(pose) + 0.5f) / float{posesShown};
}

void printMesh(std::string const &name, Qel::MD5Mesh const &mesh)
{
    std::printf("model         %s, version %u, material \"%s\"\n", name.c_str(), unsigned{mesh.version},
                mesh.shader.c_str());
    std::printf("              %zu bones, %zu vertices, %zu triangles, %zu weights\n", mesh.bones.size(),
                mesh.vertices.size(), mesh.triangles.size(), mesh.weights.size());
}

void printPoses(Figure &figure, Shown &shown)
{
    std::printf("animation     %s, %zu channels, %g s from %g s on\n", shown.name.c_str(),
                shown.animation.channels.size(), static_cast<double>(shown.animation.getDuration()),
                static_cast<double>(shown.animation.getStartTime()));
    std::vector<bool> driven(figure.mesh().bones.size());
    for (Qel::MD5Channel const &channel : shown.animation.channels) {
        if (channel.bone < driven.size()) {
            driven[channel.bone] = true;
        } else {
            std::printf("              no bone \"%s\"\n", channel.joint.c_str());
        }
    }
    std::printf("              %6s  %-16s %8s %8s %8s   %s\n", "time", "bone", "yaw", "pitch", "roll",
                "joint");
    for (int pose = 0; pose < posesShown; ++pose) {
        float const time = timeOf(shown.animation, pose);
        figure.pose(shown.animation, time);
        for (std::size_t i = 0; i < driven.size(); ++i) {
            if (driven[i]) {
                Qel::MD5Bone const &bone = figure.mesh().bones[i];
                auto const degrees = [&bone](Qel::eMD5Attribute attribute) {
                    return std::remainder(static_cast<double>(bone.attributes[attribute]) * 57.29578, 360.0);
                };
                D3DXVECTOR3 const &joint = figure.joints()[i];
                std::printf("              %6.3f  %-16s %8.2f %8.2f %8.2f   %.3f %.3f %.3f\n",
                            static_cast<double>(time), bone.name.c_str(), degrees(Qel::MD5_YAW),
                            degrees(Qel::MD5_PITCH), degrees(Qel::MD5_ROLL), static_cast<double>(joint.x),
                            static_cast<double>(joint.y), static_cast<double>(joint.z));
            }
        }
    }
}

ModelPanel panelAt(Picture &picture, int column, int row, float scale)
{
    return {picture, (static_cast<float>(column) + 0.5f) * panelWidth,
            static_cast<float>((row + 1) * panelHeight - 20), scale};
}

// A row for each animation: its poses over time, with the skinned mesh behind the bones. The first field of
// the first row is the mesh as it is loaded: every vertex on its bones.
bool draw(Qel::MD5Mesh const &mesh, std::vector<Shown> &animations, std::string const &path)
{
    float const scale = panelHeight / 1.5f / ModelPanel::sizeOf(mesh);
    int const rows = std::max(1, static_cast<int>(animations.size()));
    Picture picture((1 + posesShown) * panelWidth, rows * panelHeight);
    std::vector<D3DXVECTOR3> places;
    for (Qel::MD5Vertex const &vertex : mesh.vertices) {
        places.emplace_back(vertex.position.x, -vertex.position.z, vertex.position.y);
    }
    panelAt(picture, 0, 0, scale).triangles(mesh, places, defaultInk);
    Figure figure(mesh);
    for (int row = 0; row < static_cast<int>(animations.size()); ++row) {
        for (int pose = 0; pose < posesShown; ++pose) {
            Qel::MD5Anim &animation = animations[static_cast<std::size_t>(row)].animation;
            figure.pose(animation, timeOf(animation, pose));
            ModelPanel panel = panelAt(picture, 1 + pose, row, scale);
            panel.triangles(mesh, figure.skin(), meshInk);
            panel.sticks(figure);
        }
    }
    return writePng(path, picture.image());
}

bool fail(std::string const &path, char const *what)
{
    std::fprintf(stderr, "qelHost: %s: %s\n", path.c_str(), what);
    return false;
}

} // namespace

bool showModel(ModelRequest const &request)
{
    Qel::MD5Loader loader;
    Qel::MD5Mesh mesh;
    loader.loadModel(request.mesh.c_str(), mesh);
    if (mesh.bones.empty()) {
        return fail(request.mesh, "no model");
    }
    printMesh(request.mesh, mesh);
    std::vector<Shown> animations;
    for (std::string const &path : request.animations) {
        Shown &shown = animations.emplace_back(Shown{path, {}});
        loader.loadAnim(path.c_str(), shown.animation);
        if (shown.animation.channels.empty()) {
            return fail(path, "no animation");
        }
        shown.animation.connectBones(mesh);
        Figure figure(mesh);
        printPoses(figure, shown);
    }
    if (!request.screenshot.empty() && !draw(mesh, animations, request.screenshot)) {
        return fail(request.screenshot, "cannot be written");
    }
    return true;
}
