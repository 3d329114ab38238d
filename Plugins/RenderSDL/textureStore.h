#pragma once

#include "System/Graphics/image/image.h"

#include <cstddef>
#include <cstdint>
#include <vector>

#include <SDL.h>

/// Textures of a renderer by the numbers of their pictures. Those that were not drawn for longest go when
/// there are too many.
class TextureStore {
public:
    static constexpr std::size_t maxTextures = 64;

    TextureStore() = default;
    TextureStore(TextureStore const &) = delete;
    TextureStore &operator=(TextureStore const &) = delete;
    ~TextureStore() { clear(); }

    /// @param id  0 takes the pixels anew; that texture holds until the next call
    /// @return null without memory, and for an image without pixels
    SDL_Texture *find(SDL_Renderer *renderer, Qel::cImage const &image, std::uint32_t id);

    void clear(); ///< before the renderer goes

private:
    struct Entry {
        std::uint32_t id;
        std::uint64_t lastUse;
        SDL_Texture *texture;
    };

    SDL_Texture *make(SDL_Renderer *renderer, Qel::cImage const &image);

    std::vector<Entry> m_entries;
    SDL_Texture *m_passing = nullptr; // the one without a number
    std::uint64_t m_uses = 0;
    std::vector<unsigned char> m_pixels;
};
