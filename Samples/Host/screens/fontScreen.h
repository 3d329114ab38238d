#pragma once

#include "screen.h"

#include <deque>
#include <string>

/// The font rasteriser's effects, a line of glyphs for each.
class FontScreen final : public Screen {
public:
    char const *name() const override { return "fonts"; }
    char const *title() const override { return "Fonts"; }
    void open() override;
    void draw(Canvas &canvas, float x, float y, float w, float h) override;

private:
    struct Sheet {
        std::string effect;
        Qel::cImage glyphs;
        std::uint32_t id;
    };
    std::deque<Sheet> m_sheets;
};
