#include "textureStore.h"

#include <algorithm>
#include <new>
#include <utility>

SDL_Texture *TextureStore::find(SDL_Renderer *renderer, Qel::cImage const &image, std::uint32_t id)
{
    if (id == 0) {
        SDL_DestroyTexture(std::exchange(m_passing, nullptr));
        return m_passing = make(renderer, image);
    }
    auto entry =
        std::find_if(m_entries.begin(), m_entries.end(), [id](Entry const &known) { return known.id == id; });
    if (entry == m_entries.end()) {
        SDL_Texture *const texture = make(renderer, image);
        if (texture == nullptr) {
            return nullptr;
        }
        if (m_entries.size() < maxTextures) {
            entry = m_entries.insert(entry, Entry{});
        } else {
            entry = std::min_element(
                m_entries.begin(), m_entries.end(),
                [](Entry const &one, Entry const &other) { return one.lastUse < other.lastUse; });
            SDL_DestroyTexture(entry->texture);
        }
        *entry = {id, 0, texture};
    }
    entry->lastUse = ++m_uses;
    return entry->texture;
}

SDL_Texture *TextureStore::make(SDL_Renderer *renderer, Qel::cImage const &image)
{
    int const width = image.getWidth();
    int const height = image.getHeight();
    unsigned int const size = image.getData() == nullptr ? 0 : image.getImage(Qel::A8R8G8B8, nullptr);
    if (size == 0) {
        return nullptr;
    }
    try {
        m_pixels.resize(size);
    } catch (std::bad_alloc const &) {
        return nullptr;
    }
    image.getImage(Qel::A8R8G8B8, m_pixels.data());
    SDL_Texture *const texture =
        SDL_CreateTexture(renderer, SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_STATIC, width, height);
    if (texture == nullptr || SDL_UpdateTexture(texture, nullptr, m_pixels.data(), width * 4) != 0 ||
        SDL_SetTextureBlendMode(texture, SDL_BLENDMODE_BLEND) != 0) {
        SDL_DestroyTexture(texture);
        return nullptr;
    }
    return texture;
}

void TextureStore::clear()
{
    for (Entry const &entry : m_entries) {
        SDL_DestroyTexture(entry.texture);
    }
    m_entries.clear();
    SDL_DestroyTexture(std::exchange(m_passing, nullptr));
}
