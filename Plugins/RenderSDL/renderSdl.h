#pragma once

#include "clipping.h"
#include "textureStore.h"

#include "System/Platform/renderSystem.h"

#include <vector>

#include <SDL.h>

/// A render system on SDL's renderer: that of the graphics card where there is one, else SDL's own in
/// software. Where there is no display its window is one of SDL's drivers without a screen, and everything
/// can be drawn and read back all the same.
///
/// A window that is handed in stays its owner's.
class RenderSdl final : public Qel::RenderSystem {
public:
    RenderSdl() = default;
    RenderSdl(RenderSdl const &) = delete;
    RenderSdl &operator=(RenderSdl const &) = delete;
    ~RenderSdl() override;

    Qel::String getName() const override { return "SDL"; }

    /// @param window  an SDL_Window, or null for one of its own, which can be resized
    /// @return false also while it is initialised already
    bool initialise(void *window, int width, int height, bool fullScreen) override;

    bool beginFrame(int &width, int &height) override;
    bool draw(Qel::RenderBatch const &batch) override;
    bool endFrame(Qel::cImage *copy) override;
    void shutdown() override;

private:
    bool drawQuads(Qel::RenderBatch const &batch);
    void addPolygon();
    bool drawLines(Qel::RenderBatch const &batch);
    bool copyFrame(Qel::cImage &copy) const;

    SDL_Window *m_window = nullptr;
    SDL_Renderer *m_renderer = nullptr;
    bool m_ownsWindow = false;
    bool m_hasVideo = false; // started here
    bool m_waits = false;    // for the vertical blank, as SDL was told
    TextureStore m_textures;
    Clipping m_clipping{0, 0};
    std::vector<Qel::RenderVertex> m_polygon;
    std::vector<SDL_Vertex> m_vertices;
    std::vector<int> m_indices;
};
