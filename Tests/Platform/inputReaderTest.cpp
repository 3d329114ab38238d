#include "System/Platform/inputReader.h"

#include <gtest/gtest.h>

namespace Qel {
namespace {

// What the library's half of a reader does by itself; the rest is the plugin's.
struct BareReader : InputReader {
    bool initialise(void *) override { return false; }
    void release() override {}
    void capture(float) override {}
    bool isKeyDown(KeyCode, KeyState) const override { return false; }
    MouseState const &getMouseState() const override { return mouseState; }
    bool getNextKey(KeyEvent &) override { return false; }
    bool getNextMouse(MouseEvent &) override { return false; }
    void flushBuffers() override {}
    void feedKey(KeyEvent const &) override {}
    void feedMouse(MouseEvent const &) override {}
    void setMouseArea(int, int) override {}
    void setMousePosition(int, int) override {}
    void showPointer(bool) override {}
    bool hasFocus() const override { return false; }

    using InputReader::bufferedKeys;
    using InputReader::bufferedMouse;
    using InputReader::holdTime;
    using InputReader::keyModifiers;
    using InputReader::lockBottom;
    using InputReader::lockLeft;
    using InputReader::lockRectActive;
    using InputReader::lockRight;
    using InputReader::lockTop;
    using InputReader::multiClickTime;
};

TEST(InputReader, OrdersTheLockRectAndKeepsItWhenUnset)
{
    BareReader reader;
    EXPECT_FALSE(reader.lockRectActive);
    reader.setLockRect(100, 50, 10, 200);
    EXPECT_TRUE(reader.lockRectActive);
    reader.unsetLockRect();
    EXPECT_FALSE(reader.lockRectActive);
    EXPECT_EQ(reader.lockLeft, 10);
    EXPECT_EQ(reader.lockRight, 100);
    EXPECT_EQ(reader.lockTop, 50);
    EXPECT_EQ(reader.lockBottom, 200);
}

TEST(InputReader, StartsWithTheGivenTimesAndAsksForAnyModifierOfAMask)
{
    BareReader reader;
    EXPECT_EQ(reader.holdTime, 0.5f);
    EXPECT_EQ(reader.multiClickTime, 1.0f / 6.0f);
    EXPECT_FALSE(reader.getFreezeMouse());
    EXPECT_TRUE(reader.getLocalizedKeyName(KEY_NONE).empty());

    reader.keyModifiers = KEYMASK_ALT;
    EXPECT_TRUE(reader.getKeyModifier(static_cast<KeyMask>(KEYMASK_ALT | KEYMASK_SHIFT)));
    EXPECT_FALSE(reader.getKeyModifier(static_cast<KeyMask>(KEYMASK_CONTROL | KEYMASK_SHIFT)));

    reader.setBufferedInput(false, true);
    EXPECT_FALSE(reader.bufferedKeys);
    EXPECT_TRUE(reader.bufferedMouse);
}

} // namespace
} // namespace Qel
