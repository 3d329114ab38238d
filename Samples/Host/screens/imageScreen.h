#pragma once

#include "screen.h"

#include <string>

/// All pictures of the media on one sheet.
class ImageScreen final : public Screen {
public:
    explicit ImageScreen(std::string folder) : m_folder(std::move(folder)) {}

    char const *name() const override { return "images"; }
    char const *title() const override { return "Images"; }
    void open() override;
    void draw(Canvas &canvas, float x, float y, float w, float h) override;

private:
    std::string m_folder;
    std::string m_summary;
    Qel::cImage m_sheet;
    std::uint32_t m_id = Canvas::nextImageId();
};
