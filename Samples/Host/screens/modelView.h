#pragma once

#include "screen.h"

#include "Samples/Host/figure.h"

#include <deque>
#include <optional>
#include <string>

/// The figure of the media in all of its animations at once.
class ModelView final : public Screen {
public:
    explicit ModelView(std::string folder) : m_folder(std::move(folder)) {}

    char const *name() const override { return "model"; }
    char const *title() const override { return "Model"; }
    void open() override;
    void step(float dt) override { m_time += dt; }
    void warmUp() override { m_time = 0.3f; }
    void draw(Canvas &canvas, float x, float y, float w, float h) override;

private:
    struct Shown {
        std::string name;
        Qel::MD5Anim animation;
    };

    std::string m_folder;
    std::optional<Figure> m_figure;
    std::deque<Shown> m_animations; // stay where they are
    float m_size = 1;               // of the model as it was loaded
    float m_time = 0;               // seconds
};
