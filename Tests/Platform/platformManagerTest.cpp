#include "System/Platform/platformManager.h"

#include "System/System/exception.h"
#include "System/System/pluginMgr.h"

#include <gtest/gtest.h>

namespace Qel {
namespace {

TEST(PlatformManager, RefusesAPluginThatLacksAnExportAndNamesBoth)
{
    PluginMgr plugins;
    try {
        PlatformManager platform;
        ADD_FAILURE() << "nothing thrown";
    } catch (Exception const &failure) {
        EXPECT_EQ(failure.getNumber(), 9);
        EXPECT_NE(failure.description.find("plugin_win32platform.dll"), String::npos) << failure.description;
        EXPECT_NE(failure.description.find("destroyPlatformSplashDialog"), String::npos)
            << failure.description;
    }
    EXPECT_FALSE(PlatformManager::InstanceActive());
}

} // namespace
} // namespace Qel
