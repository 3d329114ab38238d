#pragma once

#include "screen.h"

#include "Samples/Host/particleScreen.h"

#include <optional>
#include <string>

/// The particle systems of the media while they run.
class ParticleView final : public Screen {
public:
    explicit ParticleView(std::string folder) : m_folder(std::move(folder)) {}

    char const *name() const override { return "particles"; }
    char const *title() const override { return "Particles"; }
    void open() override { m_systems.emplace(m_folder, true); }
    void step(float dt) override { m_systems->step(dt); }
    void warmUp() override { m_systems->warmUp(ParticleScreen::richTime); }
    void draw(Canvas &canvas, float x, float y, float w, float h) override;

private:
    std::string m_folder;
    std::optional<ParticleScreen> m_systems;
};
