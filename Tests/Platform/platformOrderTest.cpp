#include "System/Platform/configDialog.h"
#include "System/Platform/errorDialog.h"
#include "System/Platform/inputReader.h"
#include "System/Platform/renderSystem.h"
#include "System/Platform/splashDialog.h"

#include "Tests/virtualSlot.h"

#include <gtest/gtest.h>

namespace Qel {
namespace {

// Plugins are built against these tables. A destructor takes two places.
TEST(PlatformInterfaces, KeepTheOrderOfTheirOperations)
{
    using R = InputReader;
    using S = RenderSystem;
    EXPECT_TRUE(standInOrder(2, &ConfigDialog::display));
    EXPECT_TRUE(standInOrder(0, &ErrorDialog::display));
    EXPECT_TRUE(standInOrder(2, &SplashDialog::display, &SplashDialog::setProgress));
    EXPECT_TRUE(standInOrder(2, &R::initialise, &R::release, &R::capture, &R::isKeyDown, &R::getMouseState,
                             &R::getNextKey, &R::getNextMouse, &R::flushBuffers, &R::feedKey, &R::feedMouse,
                             &R::setMouseArea, &R::setMousePosition, &R::showPointer, &R::hasFocus,
                             &R::getLocalizedKeyName, &R::setBufferedInput));
    EXPECT_TRUE(
        standInOrder(2, &S::getName, &S::initialise, &S::beginFrame, &S::draw, &S::endFrame, &S::shutdown));
}

TEST(PlatformInterfaces, AskNothingOfAPluginThatTheLibraryDoesNotCall)
{
    struct MouseOnly final : InputReader {
        MouseOnly() { mouseState.buttons = 2; }
    };
    MouseOnly reader;
    EXPECT_EQ(reader.getMouseState().buttons, 2);
    EXPECT_FALSE(reader.isKeyDown(KEY_NONE, KEY_DOWN));
    EXPECT_FALSE(SplashDialog().display());
    EXPECT_FALSE(RenderSystem().draw({}));
}

} // namespace
} // namespace Qel
