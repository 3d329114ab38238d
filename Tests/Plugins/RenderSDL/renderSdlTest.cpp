#include "Tests/Plugins/archivePlugin.h"

#include "System/Graphics/image/image.h"
#include "System/Platform/renderSystem.h"
#include "System/System/Root.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <optional>

namespace Qel {
namespace {

constexpr unsigned int red = 0xFFFF0000;
constexpr unsigned int black = 0xFF000000;

using Quad = std::array<RenderVertex, 4>;

Quad quad(float x, float y, float width, float height, Color color)
{
    return {{{x, y, 0, 0, color},
             {x + width, y, 1, 0, color},
             {x + width, y + height, 1, 1, color},
             {x, y + height, 0, 1, color}}};
}

// Without a display, as on a machine that builds.
class RenderSdl : public testing::Test {
protected:
    RenderSdl()
    {
        unsetenv("DISPLAY");
        unsetenv("WAYLAND_DISPLAY");
        test::writeFile("plugins.cfg", "");
        testing::internal::CaptureStderr();
        root.emplace("plugins.cfg", "a.log", false);
        plugin.emplace("plugin_rendersdl.dll");
        renderer = root->getAvailableRenderers()->back();
        root->setRenderSystem(renderer);
        EXPECT_TRUE(renderer->initialise(nullptr, 40, 30, false));
    }
    ~RenderSdl() override
    {
        plugin.reset();
        root.reset();
        testing::internal::GetCapturedStderr();
    }

    void draw(Quad const &shape, cImage const *texture = nullptr, std::uint32_t id = 0)
    {
        EXPECT_TRUE(renderer->draw({RenderBatch::QUADS, shape.data(), shape.size(), texture, id}));
    }

    void begin()
    {
        int width = 0;
        int height = 0;
        ASSERT_TRUE(renderer->beginFrame(width, height));
        EXPECT_EQ(width, 40);
        EXPECT_EQ(height, 30);
    }

    // Pixels of the frame that are not black.
    unsigned int end()
    {
        EXPECT_TRUE(renderer->endFrame(&frame));
        EXPECT_EQ(frame.getWidth() * 100 + frame.getHeight(), 4030);
        unsigned int drawn = 0;
        for (unsigned int y = 0; y < 30; ++y) {
            for (unsigned int x = 0; x < 40; ++x) {
                drawn += frame.getPixel(x, y) != black ? 1 : 0;
            }
        }
        return drawn;
    }

    test::TempFolder folder;
    std::optional<Root> root;
    std::optional<StartedPlugin> plugin;
    RenderSystem *renderer = nullptr;
    cImage frame;
};

TEST_F(RenderSdl, DrawsQuadsAndLinesToThePixel)
{
    begin();
    draw(quad(10, 5, 4, 3, red));
    EXPECT_EQ(end(), 12u);
    EXPECT_EQ(frame.getPixel(10, 5), red);
    EXPECT_EQ(frame.getPixel(13, 7), red);

    begin();
    draw(quad(-3, -2, 5, 4, red)); // cut at two edges
    draw(quad(38, 28, 100, 100, red));
    EXPECT_EQ(end(), 4u + 4u);

    begin();
    draw(quad(0, 0, 2, 2, 0xFF0000FF));
    draw(quad(0, 0, 2, 2, 0x80FF0000)); // half over it
    EXPECT_EQ(end(), 4u);
    EXPECT_NEAR(frame.getPixel(1, 1) >> 16 & 255, 128, 1);
    EXPECT_NEAR(frame.getPixel(1, 1) & 255, 127, 1);

    begin();
    RenderVertex const line[] = {{3, 2, 0, 0, red}, {9, 2, 0, 0, 0}, {1, 1, 0, 0, red}};
    EXPECT_TRUE(renderer->draw({RenderBatch::LINES, line, 3, nullptr, 0})) << "no half of a line";
    EXPECT_EQ(end(), 7u);
    EXPECT_EQ(frame.getPixel(9, 2), red);

    // Far outside, and no numbers at all: cut, and quickly.
    begin();
    cImage picture;
    picture.setCanvas(A8R8G8B8, 2, 2, nullptr);
    draw(quad(-40000, 5, 80000, 3, red));
    draw(quad(-1e9f, -1e9f, 2e9f, 2e9f, red), &picture); // its picture has no alpha
    draw(quad(std::nanf(""), 0, 5, 5, red));
    RenderVertex const far[] = {
        {-1e9f, 20, 0, 0, red}, {1e9f, 20, 0, 0, 0}, {1e9f, 50, 0, 0, red}, {2e9f, 9, 0, 0, 0}};
    EXPECT_TRUE(renderer->draw({RenderBatch::LINES, far, 4, nullptr, 0}));
    EXPECT_EQ(end(), 40u * 3 + 40u);
}

TEST_F(RenderSdl, KnowsTexturesByTheirNumbers)
{
    auto const picture = [](cPixelFormat const &format, unsigned int pixel) {
        cImage image;
        image.setCanvas(format, 2, 2, nullptr);
        for (unsigned int i = 0; i < 4; ++i) {
            image.setPixel(i % 2, i / 2, pixel);
        }
        return image;
    };
    auto const drawn = [&](cImage const &image, std::uint32_t id) {
        begin();
        draw(quad(4, 4, 2, 2, 0xFFFFFFFF), &image, id);
        EXPECT_EQ(end(), 4u);
        return frame.getPixel(5, 5);
    };
    cImage const green = picture(R5G6B5, 0x07E0);
    cImage const blue = picture(A8R8G8B8, 0xFF0000FF);
    EXPECT_EQ(drawn(green, 0), 0xFF00FC00);
    EXPECT_EQ(drawn(blue, 0), 0xFF0000FF);
    EXPECT_EQ(drawn(green, 7), 0xFF00FC00);
    EXPECT_EQ(drawn(blue, 7), 0xFF00FC00) << "the picture of this number is there";
    for (std::uint32_t id = 100; id < 200; ++id) {
        EXPECT_EQ(drawn(blue, id), 0xFF0000FF);
    }
    EXPECT_EQ(drawn(blue, 7), 0xFF0000FF) << "it went after many others";

    begin();
    cImage const none;
    Quad const shape = quad(0, 0, 2, 2, red);
    EXPECT_FALSE(renderer->draw({RenderBatch::QUADS, shape.data(), 4, &none, 0}));
    EXPECT_EQ(end(), 0u);
}

TEST_F(RenderSdl, GivesItsWindowBackWhenItIsReplaced)
{
    EXPECT_FALSE(renderer->initialise(nullptr, 10, 10, false)) << "it is";
    root->setRenderSystem(nullptr);
    int width = -1;
    int height = -1;
    EXPECT_FALSE(renderer->beginFrame(width, height));
    EXPECT_EQ(width + height, -2);
    EXPECT_FALSE(renderer->draw({}) || renderer->endFrame(nullptr));

    root->setRenderSystem(renderer);
    renderer->setWaitForVerticalBlank(true);
    ASSERT_TRUE(renderer->initialise(nullptr, 40, 30, false));
    begin();
    draw(quad(0, 0, 1, 1, red));
    EXPECT_EQ(end(), 1u);

    plugin.reset();
    EXPECT_EQ(root->getRenderSystem(), nullptr) << "gone with its plugin";
}

} // namespace
} // namespace Qel
