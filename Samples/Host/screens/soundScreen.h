#pragma once

#include "screen.h"

#include "Samples/Host/soundScene.h"

#include <memory>
#include <string>

namespace Qel {
class iSoundSystem;
}

/// The scene of sounds while it plays, and who has a voice.
class SoundScreen final : public Screen {
public:
    explicit SoundScreen(std::string folder) : m_folder(std::move(folder)) {}
    ~SoundScreen() override;

    char const *name() const override { return "sound"; }
    char const *title() const override { return "Sound"; }
    void open() override;
    void step(float dt) override;
    void warmUp() override;
    void draw(Canvas &canvas, float x, float y, float w, float h) override;

private:
    std::string m_folder;
    std::unique_ptr<SoundScene> m_scene;
    Qel::iSoundSystem *m_system = nullptr;
};
