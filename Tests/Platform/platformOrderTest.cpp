#include "System/Platform/configDialog.h"
#include "System/Platform/errorDialog.h"
#include "System/Platform/inputReader.h"
#include "System/Platform/renderSystem.h"
#include "System/Platform/splashDialog.h"

#include "Tests/virtualSlot.h"

#include <gtest/gtest.h>

#include <vector>

namespace Qel {
namespace {

// Plugins are built against these tables. A destructor takes two places.
TEST(PlatformInterfaces, KeepTheOrderOfTheirOperations)
{
    using R = InputReader;
    using S = RenderSystem;
    struct {
        char const *what;
        std::size_t first;
        std::vector<std::size_t> slots;
    } const rows[] = {
        {"ConfigDialog", 2, {virtualSlot(&ConfigDialog::display)}},
        {"ErrorDialog", 0, {virtualSlot(&ErrorDialog::display)}},
        {"SplashDialog", 2, {virtualSlot(&SplashDialog::display), virtualSlot(&SplashDialog::setProgress)}},
        {"InputReader",
         2,
         {virtualSlot(&R::initialise), virtualSlot(&R::release), virtualSlot(&R::capture),
          virtualSlot(&R::isKeyDown), virtualSlot(&R::getMouseState), virtualSlot(&R::getNextKey),
          virtualSlot(&R::getNextMouse), virtualSlot(&R::flushBuffers), virtualSlot(&R::feedKey),
          virtualSlot(&R::feedMouse), virtualSlot(&R::setMouseArea), virtualSlot(&R::setMousePosition),
          virtualSlot(&R::showPointer), virtualSlot(&R::hasFocus), virtualSlot(&R::getLocalizedKeyName),
          virtualSlot(&R::setBufferedInput)}},
        {"RenderSystem",
         2,
         {virtualSlot(&S::getName), virtualSlot(&S::initialise), virtualSlot(&S::resize),
          virtualSlot(&S::beginFrame), virtualSlot(&S::endFrame), virtualSlot(&S::shutdown)}},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.what);
        for (std::size_t i = 0; i < row.slots.size(); ++i) {
            EXPECT_EQ(row.slots[i], row.first + i);
        }
    }
}

} // namespace
} // namespace Qel
