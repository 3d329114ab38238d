#include "renderSdl.h"

#include "System/Graphics/image/image.h"
#include "System/System/logManager.h"

#include <algorithm>
#include <utility>

namespace {

void report(char const *what)
{
    Qel::logMessage(Qel::String("RenderSDL: ") + what + ": " + SDL_GetError() + '\n', 3);
}

// Drivers without a screen are drawn on in software: a graphics library has nothing to show there.
bool hasScreen()
{
    Qel::String const driver = SDL_GetCurrentVideoDriver();
    return driver != "dummy" && driver != "offscreen";
}

// The display's driver. A machine without a display is told from the names of display servers, and gets a
// driver without a screen: looking for a display would have the libraries below complain and keep memory. A
// display that is named and does not answer is a mistake.
bool startVideo()
{
    bool const isAsked = SDL_getenv("SDL_VIDEODRIVER") != nullptr || SDL_WasInit(SDL_INIT_VIDEO) != 0;
    if (isAsked || SDL_getenv("DISPLAY") != nullptr || SDL_getenv("WAYLAND_DISPLAY") != nullptr) {
        if (SDL_InitSubSystem(SDL_INIT_VIDEO) != 0) {
            return false;
        }
        if (isAsked || hasScreen()) {
            return true;
        }
        SDL_QuitSubSystem(SDL_INIT_VIDEO);
        SDL_SetError("the display does not answer");
        return false;
    }
    SDL_SetHintWithPriority(SDL_HINT_VIDEODRIVER, "dummy", SDL_HINT_OVERRIDE);
    bool const isStarted = SDL_InitSubSystem(SDL_INIT_VIDEO) == 0;
    SDL_ResetHint(SDL_HINT_VIDEODRIVER);
    return isStarted;
}

SDL_Color colorOf(Qel::Color color)
{
    auto const channel = [color](int shift) { return static_cast<Uint8>(color.value >> shift); };
    return {channel(16), channel(8), channel(0), channel(24)};
}

} // namespace

RenderSdl::~RenderSdl()
{
    RenderSdl::shutdown();
}

bool RenderSdl::initialise(void *window, int width, int height, bool fullScreen)
{
    if (m_renderer != nullptr) {
        return false;
    }
    m_hasVideo = startVideo();
    if (!m_hasVideo) {
        report("no video");
        return false;
    }
    m_ownsWindow = window == nullptr;
    m_window = static_cast<SDL_Window *>(window);
    if (m_ownsWindow) {
        Uint32 const flags =
            fullScreen ? SDL_WINDOW_RESIZABLE | SDL_WINDOW_FULLSCREEN_DESKTOP : SDL_WINDOW_RESIZABLE;
        m_window = SDL_CreateWindow("qelSystem", SDL_WINDOWPOS_UNDEFINED, SDL_WINDOWPOS_UNDEFINED, width,
                                    height, flags);
    }
    if (m_window != nullptr) {
        m_waits = waitForVerticalBlank;
        Uint32 const sync = m_waits ? Uint32{SDL_RENDERER_PRESENTVSYNC} : 0;
        m_renderer =
            hasScreen() ? SDL_CreateRenderer(m_window, -1, SDL_RENDERER_ACCELERATED | sync) : nullptr;
        if (m_renderer == nullptr) {
            m_renderer = SDL_CreateRenderer(m_window, -1, SDL_RENDERER_SOFTWARE | sync);
        }
    }
    if (m_renderer == nullptr) {
        report("no window");
        shutdown();
        return false;
    }
    SDL_SetRenderDrawBlendMode(m_renderer, SDL_BLENDMODE_BLEND);
    return true;
}

bool RenderSdl::beginFrame(int &width, int &height)
{
    int newWidth = 0;
    int newHeight = 0;
    if (m_renderer == nullptr || SDL_GetRendererOutputSize(m_renderer, &newWidth, &newHeight) != 0) {
        return false;
    }
    if (m_waits != waitForVerticalBlank) {
        // What cannot wait goes on without: it is not asked again.
        m_waits = waitForVerticalBlank;
        SDL_RenderSetVSync(m_renderer, m_waits ? 1 : 0);
    }
    SDL_SetRenderDrawColor(m_renderer, 0, 0, 0, SDL_ALPHA_OPAQUE);
    if (SDL_RenderClear(m_renderer) != 0) {
        return false;
    }
    m_clipping = Clipping(newWidth, newHeight);
    width = newWidth;
    height = newHeight;
    return true;
}

bool RenderSdl::draw(Qel::RenderBatch const &batch)
{
    if (m_renderer == nullptr) {
        return false;
    }
    return batch.shape == Qel::RenderBatch::QUADS ? drawQuads(batch) : drawLines(batch);
}

bool RenderSdl::drawQuads(Qel::RenderBatch const &batch)
{
    std::size_t const quads = batch.vertexCount / 4;
    if (quads == 0) {
        return true;
    }
    SDL_Texture *texture = nullptr;
    if (batch.texture != nullptr) {
        texture = m_textures.find(m_renderer, *batch.texture, batch.textureId);
        if (texture == nullptr) {
            return false;
        }
    }
    m_vertices.clear();
    m_indices.clear();
    for (std::size_t i = 0; i < quads * 4; i += 4) {
        m_polygon.assign(batch.vertices + i, batch.vertices + i + 4);
        if (!m_clipping.isNear(m_polygon.data(), m_polygon.size())) {
            m_clipping.cut(m_polygon);
        }
        addPolygon();
    }
    return m_indices.empty() ||
           SDL_RenderGeometry(m_renderer, texture, m_vertices.data(), static_cast<int>(m_vertices.size()),
                              m_indices.data(), static_cast<int>(m_indices.size())) == 0;
}

// As a fan of triangles.
void RenderSdl::addPolygon()
{
    int const first = static_cast<int>(m_vertices.size());
    auto const inTexture = [](float value) { return std::clamp(value, 0.0f, 1.0f); };
    for (Qel::RenderVertex const &vertex : m_polygon) {
        m_vertices.push_back(
            {{vertex.x, vertex.y}, colorOf(vertex.color), {inTexture(vertex.u), inTexture(vertex.v)}});
    }
    for (int i = 2; i < static_cast<int>(m_polygon.size()); ++i) {
        m_indices.insert(m_indices.end(), {first, first + i - 1, first + i});
    }
}

bool RenderSdl::drawLines(Qel::RenderBatch const &batch)
{
    bool isDrawn = true;
    for (std::size_t i = 0; i + 1 < batch.vertexCount; i += 2) {
        Qel::RenderVertex from = batch.vertices[i];
        Qel::RenderVertex to = batch.vertices[i + 1];
        SDL_Color const color = colorOf(from.color);
        if (!m_clipping.isNear(batch.vertices + i, 2) && !m_clipping.cutLine(from, to)) {
            continue;
        }
        isDrawn = SDL_SetRenderDrawColor(m_renderer, color.r, color.g, color.b, color.a) == 0 &&
                  SDL_RenderDrawLineF(m_renderer, from.x, from.y, to.x, to.y) == 0 && isDrawn;
    }
    return isDrawn;
}

bool RenderSdl::endFrame(Qel::cImage *copy)
{
    if (m_renderer == nullptr) {
        return false;
    }
    bool const isCopied = copy == nullptr || copyFrame(*copy);
    SDL_RenderPresent(m_renderer);
    return isCopied;
}

bool RenderSdl::copyFrame(Qel::cImage &copy) const
{
    int width = 0;
    int height = 0;
    if (SDL_GetRendererOutputSize(m_renderer, &width, &height) != 0 || width > 0xFFFF || height > 0xFFFF ||
        copy.setCanvas(Qel::A8R8G8B8, static_cast<unsigned short>(width), static_cast<unsigned short>(height),
                       nullptr) == 0) {
        return false;
    }
    return SDL_RenderReadPixels(m_renderer, nullptr, SDL_PIXELFORMAT_ARGB8888, copy.getData(), width * 4) ==
           0;
}

void RenderSdl::shutdown()
{
    m_textures.clear();
    if (m_renderer != nullptr) {
        SDL_DestroyRenderer(std::exchange(m_renderer, nullptr));
    }
    SDL_Window *const window = std::exchange(m_window, nullptr);
    if (m_ownsWindow && window != nullptr) {
        SDL_DestroyWindow(window);
    }
    if (std::exchange(m_hasVideo, false)) {
        SDL_QuitSubSystem(SDL_INIT_VIDEO);
    }
}
