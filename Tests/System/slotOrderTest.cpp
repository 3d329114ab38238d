#include "System/Patterns/factoryObj.h"
#include "System/System/frameListener.h"
#include "System/System/log.h"
#include "System/System/plugin.h"

#include "Tests/virtualSlot.h"

#include <gtest/gtest.h>

namespace Qel {
namespace {

// A virtual destructor takes two places of the table.
TEST(SlotOrder, PluginsFindTheOperationsWhereTheyWereBuiltAgainst)
{
    using LogWide = void (Log::*)(WString const &, LogMessageLevel);
    using LogNarrow = void (Log::*)(String const &, LogMessageLevel);
    EXPECT_EQ(virtualSlot(static_cast<LogWide>(&Log::logMessage)), 3u);
    EXPECT_EQ(virtualSlot(static_cast<LogNarrow>(&Log::logMessage)), 4u);
    EXPECT_EQ(virtualSlot(&Log::setLogDetail), 5u);
    EXPECT_EQ(virtualSlot(&Log::isWithinThreshold), 6u);

    EXPECT_EQ(virtualSlot(&Plugin::load), 2u);
    EXPECT_EQ(virtualSlot(&Plugin::unload), 3u);
    EXPECT_EQ(virtualSlot(&Plugin::getSymbol), 4u);

    EXPECT_EQ(virtualSlot(&FrameListener::frameStarted), 0u);
    EXPECT_EQ(virtualSlot(&FrameListener::frameEnded), 1u);
    EXPECT_EQ(virtualSlot(&FrameListener::frameRender), 2u);
    EXPECT_EQ(virtualSlot(&FrameListener::frameIdle), 3u);

    EXPECT_EQ(virtualSlot(&FactoryObj<int>::getType), 2u);
    EXPECT_EQ(virtualSlot(&FactoryObj<int>::createInstance), 3u);
}

} // namespace
} // namespace Qel
