#include "modelView.h"

#include "style.h"

#include "Samples/Host/modelPanel.h"

#include "System/Graphics/model/md5Loader.h"

#include <cmath>

void ModelView::open()
{
    Qel::MD5Loader loader;
    Qel::MD5Mesh mesh;
    loader.loadModel((m_folder + "/Figure.md5mesh").c_str(), mesh);
    if (mesh.bones.empty()) {
        return;
    }
    for (char const *const name : {"Walk", "Wave"}) {
        Shown &shown = m_animations.emplace_back(Shown{name, {}});
        loader.loadAnim((m_folder + "/" + name + ".md5anim").c_str(), shown.animation);
        shown.animation.connectBones(mesh);
    }
    m_size = ModelPanel::sizeOf(mesh);
    m_figure.emplace(mesh);
}

void ModelView::draw(Canvas &canvas, float x, float y, float w, float h)
{
    if (!m_figure) {
        canvas.text(x, y, "There is no model beside the program.", style::faint);
        return;
    }
    Qel::MD5Mesh const &mesh = m_figure->mesh();
    canvas.text(x, y,
                style::format("Figure: %zu bones, %zu vertices, %zu triangles", mesh.bones.size(),
                              mesh.vertices.size(), mesh.triangles.size()));
    float const top = 2 * canvas.lineHeight();
    Picture picture(static_cast<int>(w), static_cast<int>(h - top), {20, 23, 29});
    float const field = w / static_cast<float>(m_animations.size());
    float const ground = h - top - 2 * canvas.lineHeight();
    float const scale = ground / 1.15f / m_size;
    for (std::size_t i = 0; i < m_animations.size(); ++i) {
        Qel::MD5Anim &animation = m_animations[i].animation;
        float const length = animation.getDuration();
        m_figure->pose(animation, animation.getStartTime() + (length > 0 ? std::fmod(m_time, length) : 0.0f));
        ModelPanel panel(picture, (static_cast<float>(i) + 0.5f) * field, ground, scale);
        panel.triangles(mesh, m_figure->skin(), {90, 105, 125});
        panel.sticks(*m_figure, {90, 169, 230}, {230, 162, 60});
    }
    canvas.image(picture.image(), x, y + top, w, h - top, 0);
    for (std::size_t i = 0; i < m_animations.size(); ++i) {
        Shown const &shown = m_animations[i];
        std::string const caption = style::format("%s, %.2f s", shown.name.c_str(),
                                                  static_cast<double>(shown.animation.getDuration()));
        canvas.text(x + (static_cast<float>(i) + 0.5f) * field - canvas.textWidth(caption) / 2,
                    y + h - canvas.lineHeight(), caption, style::faint);
    }
}
