#include "modelScreen.h"

#include "figure.h"
#include "picture.h"

#include "System/Graphics/model/md5Loader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace {

constexpr int posesShown = 8; // of each animation
constexpr int panelWidth = 170;
constexpr int panelHeight = 330;
constexpr Picture::Ink stickInk{20, 60, 140};
constexpr Picture::Ink jointInk{200, 60, 30};
constexpr Picture::Ink meshInk{190, 195, 200};
constexpr Picture::Ink defaultInk{60, 130, 70};

struct Shown {
    std::string name;
    Qel::MD5Anim animation;
};

// Two of the three coordinates of a place, seen from ahead and the side, with z up.
std::array<float, 2> seen(D3DXVECTOR3 const &place)
{
    constexpr float angle = 0.9f;
    return {place.x * std::cos(angle) + place.y * std::sin(angle), place.z};
}

// A field of the picture, which is as high as a figure and a half.
class Panel {
public:
    Panel(Picture &picture, int column, int row, float scale)
        : m_picture(picture), m_x((static_cast<float>(column) + 0.5f) * panelWidth),
          m_y(static_cast<float>((row + 1) * panelHeight - 20)), m_scale(scale)
    {
    }

    void line(D3DXVECTOR3 const &from, D3DXVECTOR3 const &to, float width, Picture::Ink ink)
    {
        auto const [x1, y1] = seen(from);
        auto const [x2, y2] = seen(to);
        m_picture.line(m_x + x1 * m_scale, m_y - y1 * m_scale, m_x + x2 * m_scale, m_y - y2 * m_scale, width,
                       ink);
    }

    void triangles(Qel::MD5Mesh const &mesh, std::vector<D3DXVECTOR3> const &places, Picture::Ink ink)
    {
        for (Qel::MD5Triangle const &triangle : mesh.triangles) {
            if (std::max({triangle.a, triangle.b, triangle.c}) < places.size()) {
                line(places[triangle.a], places[triangle.b], 1, ink);
                line(places[triangle.b], places[triangle.c], 1, ink);
                line(places[triangle.c], places[triangle.a], 1, ink);
            }
        }
    }

    void sticks(Figure const &figure)
    {
        for (std::size_t i = 0; i < figure.joints().size(); ++i) {
            if (std::size_t const parent = figure.mesh().bones[i].parentIndex;
                parent < figure.joints().size()) {
                line(figure.joints()[parent], figure.joints()[i], 4, stickInk);
            }
        }
        for (D3DXVECTOR3 const &joint : figure.joints()) {
            line(joint, joint, 6, jointInk);
        }
    }

private:
    Picture &m_picture;
    float m_x;
    float m_y;
    float m_scale;
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

// A row for each animation: its poses over time, with the skinned mesh behind the bones. The first field of
// the first row is the mesh as it is loaded: every vertex on its bones.
bool draw(Qel::MD5Mesh const &mesh, std::vector<Shown> &animations, std::string const &path)
{
    float size = 1e-6f;
    for (Qel::MD5Bone const &bone : mesh.bones) {
        size =
            std::max({size, std::abs(bone.position.x), std::abs(bone.position.y), std::abs(bone.position.z)});
    }
    float const scale = panelHeight / 1.5f / size;
    int const rows = std::max(1, static_cast<int>(animations.size()));
    Picture picture((1 + posesShown) * panelWidth, rows * panelHeight);
    std::vector<D3DXVECTOR3> places;
    for (Qel::MD5Vertex const &vertex : mesh.vertices) {
        places.emplace_back(vertex.position.x, -vertex.position.z, vertex.position.y);
    }
    Panel(picture, 0, 0, scale).triangles(mesh, places, defaultInk);
    Figure figure(mesh);
    for (int row = 0; row < static_cast<int>(animations.size()); ++row) {
        for (int pose = 0; pose < posesShown; ++pose) {
            Qel::MD5Anim &animation = animations[static_cast<std::size_t>(row)].animation;
            figure.pose(animation, timeOf(animation, pose));
            Panel panel(picture, 1 + pose, row, scale);
            panel.triangles(mesh, figure.skin(), meshInk);
            panel.sticks(figure);
        }
    }
    return picture.save(path);
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
