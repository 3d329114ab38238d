#include "System/Graphics/image/image.h"
#include "System/Platform/inputReader.h"
#include "System/Platform/platformManager.h"
#include "System/Platform/renderSystem.h"
#include "System/System/Root.h"

#include <fstream>

using namespace Qel;

namespace {

constexpr KeyCode keyEscape = static_cast<KeyCode>(41); // by its place, as USB keyboards number them

/// A square that follows the pointer.
class Viewer final : public FrameListener {
public:
    explicit Viewer(RenderSystem &renderer)
        : m_renderer(renderer), m_reader(PlatformManager::Instance().createInputReader())
    {
        m_reader->initialise(nullptr); // the window of this process
    }
    ~Viewer() { PlatformManager::Instance().destroyInputReader(m_reader); }

    bool frameStarted(FrameEvent const &event) override
    {
        m_seconds += event.sameEventTime;
        m_reader->capture(m_seconds);
        return !m_reader->isKeyDown(keyEscape, KEY_PRESSED) && ++m_frames < 3; // a real one goes on
    }

    bool frameRender() override
    {
        int width;
        int height;
        if (!m_renderer.beginFrame(width, height)) {
            return true; // nothing to draw on just now
        }
        auto const x = static_cast<float>(m_reader->getMouseState().x);
        auto const y = static_cast<float>(m_reader->getMouseState().y);
        Color const orange = 0xFFE6A23C;
        RenderVertex const square[] = {{x, y, 0, 0, orange},
                                       {x + 20, y, 0, 0, orange},
                                       {x + 20, y + 20, 0, 0, orange},
                                       {x, y + 20, 0, 0, orange}};
        m_renderer.draw({RenderBatch::QUADS, square, 4, nullptr, 0});
        m_renderer.endFrame(&picture);
        return true;
    }

    cImage picture; // the last frame

private:
    RenderSystem &m_renderer;
    InputReader *m_reader;
    float m_seconds = 0;
    int m_frames = 0;
};

} // namespace

int main()
{
    std::ofstream("window.cfg") << "Plugin=plugin_rendersdl\n";
    Root root("window.cfg", "window.log", false);
    if (root.getAvailableRenderers()->empty()) {
        return 1;
    }
    RenderSystem &renderer = *root.getAvailableRenderers()->front();
    root.setRenderSystem(&renderer);
    if (!renderer.initialise(nullptr, 320, 200, false)) {
        return 1; // the log says why
    }
    Viewer viewer(renderer);
    root.addFrameListener(&viewer);
    root.run(); // until the window is closed, or escape
    root.removeFrameListener(&viewer);
    root.setRenderSystem(nullptr); // gives the window back
    return viewer.picture.getPixel(5, 5) == 0xFFE6A23C ? 0 : 1;
}
