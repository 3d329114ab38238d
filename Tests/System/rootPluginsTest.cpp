#include "System/Codec/codecManager.h"
#include "System/System/Root.h"
#include "System/System/configFile.h"
#include "System/System/exception.h"
#include "System/System/logManager.h"
#include "System/System/pluginMgr.h"

#include "Tests/Tools/debugText.h"
#include "Tests/Tools/steeredClock.h"
#include "Tests/Tools/tempFolder.h"

#include "Support/OS/messagePump.h"
#include "Support/PoolHeap/poolHeap.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>
#include <tuple>

namespace Qel {
namespace {

// What is logged before the plugins are loaded.
std::string const beginning = "Timer Initialising\nQel Initialising\n"
                              "Codec type 'CODEC_MTF' registered.\nCodec type 'CODEC_HUFFMAN' registered.\n"
                              "Codec type 'CODEC_LZ77' registered.\nCodec type 'CODEC_LZW' registered.\n"
                              "Codec type 'CODEC_ZIP' registered.\n";

// Works in a folder of its own, in which "m/" is the folder of the test modules.
class RootPluginsTest : public testing::Test {
protected:
    RootPluginsTest() { std::filesystem::create_directory_symlink(TEST_MODULE_FOLDER, "m"); }

    // Makes a Root from a plugin list and destroys it. Returns its log, which is also on the error stream.
    std::string log(std::string const &plugins)
    {
        test::writeFile("plugins.cfg", plugins);
        testing::internal::CaptureStderr();
        thrown.reset();
        try {
            Root root("plugins.cfg", "a.log", true);
            loaded = root.getPlugins().size();
            renderers = root.getAvailableRenderers()->size();
        } catch (Exception const &exception) {
            thrown = exception;
        }
        std::string const echo = testing::internal::GetCapturedStderr();
        EXPECT_EQ(echo, test::readFile("a.log"));
        return echo;
    }

    test::TempFolder m_folder;
    test::SteeredClock m_clock;
    test::DebugText debug;
    std::optional<Exception> thrown;
    std::size_t loaded = 0;
    std::size_t renderers = 0;
};

TEST_F(RootPluginsTest, PluginsStartInOrderAndStopInReverseWithoutALog)
{
    m_clock.ticksPerMillisecondRead = 10'000 * 25;
    EXPECT_EQ(log("PluginFolder=m/\nPlugin=good_b\nPlugin=good_a\n"),
              beginning + "start good_b\nstart good_a\n"
                          "Qel initialized in 0.05sec\nQel Shutdown\n");
    EXPECT_EQ(debug.text(), "stop good_a\nstop good_b\n");
    EXPECT_EQ(loaded, 2u);
    EXPECT_EQ(renderers, 2u);
    EXPECT_FALSE(Root::InstanceActive() || LogManager::InstanceActive() || PluginMgr::InstanceActive());
}

TEST_F(RootPluginsTest, OnePluginsFaultLeavesTheOthersRunning)
{
    struct {
        char const *what;
        char const *config;
        char const *lines; // what the log says between start-up and the end of it
        std::size_t loaded, renderers;
        char const *stops;
    } const rows[] = {
        {"missing dependency",
         "Plugin=good_a\ngood_a=plugin_win32platform\ngood_a=no_such_library\ngood_a=never_tried\nPlugin="
         "good_b\n",
         "Unable to load plugin 'good_a.dll' - could not find 'no_such_library.dll'!\nstart good_b\n", 1, 1,
         "stop good_b\n"},
        {"dependency that is there", "Plugin=good_a\ngood_a=plugin_win32platform\n", "start good_a\n", 1, 1,
         "stop good_a\n"},
        {"no start function", "Plugin=no_start\nPlugin=good_b\n",
         "m/no_start.DLL Cannot find symbol dllStartPlugin\nstart good_b\n", 2, 1,
         "stop good_b\nstop no_start\n"},
        {"no stop function", "Plugin=no_stop\nPlugin=good_b\n", "start no_stop\nstart good_b\n", 2, 2,
         "stop good_b\n"},
        {"start that throws", "Plugin=good_a\nPlugin=throws\nPlugin=good_b\n",
         "start good_a\nstart throws\nAn exception has been thrown!\nError #: 9\nFunction: dllStartPlugin\n"
         "Description: no such device. \nStack unwinding:\n- <<callstack>>\n"
         "Plugin 'm/throws.dll' is left out, its dllStartPlugin has thrown: no such device\nstart good_b\n",
         2, 2, "stop good_b\nstop good_a\n"},
        {"the same plugin twice", "Plugin=good_a\nPlugin=good_a\n",
         "start good_a\nPlugin 'm/good_a.dll' is loaded already\n", 1, 1, "stop good_a\n"},
        {"stop that throws", "Plugin=good_a\nPlugin=throws_late\n", "start good_a\nstart throws_late\n", 2, 2,
         "stop throws_late\nA plugin's dllStopPlugin has thrown an exception\nstop good_a\n"},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.what);
        std::string const before = debug.text();
        EXPECT_EQ(log(std::string("PluginFolder=m/\n") + row.config),
                  beginning + row.lines + "Qel initialized in 0sec\nQel Shutdown\n");
        EXPECT_FALSE(thrown.has_value());
        EXPECT_EQ(loaded, row.loaded);
        EXPECT_EQ(renderers, row.renderers);
        EXPECT_EQ(debug.text().substr(before.size()), row.stops);
    }
}

// A stop function frees its objects and may forget the engine's lists, and a plugin may fail after it has
// brought others up. In either case nothing of it is told of the next frame.
TEST_F(RootPluginsTest, WhatAPluginRegisteredGoesWithIt)
{
    test::writeFile("others.cfg", "PluginFolder=m/\nPlugin=good_b\n");
    test::writeFile("plugins.cfg", "Plugin=m/good_a\nPlugin=m/throws_nested\n"
                                   "Plugin=plugin_win32platform\n");
    testing::internal::CaptureStderr();
    Root root("plugins.cfg", "a.log", false);
    FrameEvent event;
    EXPECT_TRUE(root._fireFrameStarted(event));
    ASSERT_EQ(root.getPlugins().size(), 2u);
    EXPECT_STREQ(root.getPlugins()[1]->getName().c_str(), "m/good_b.dll");
    EXPECT_EQ(root.getAvailableRenderers()->size(), 2u);
    EXPECT_EQ(CodecManager::Instance().getCodec("CODEC_NESTED"), nullptr);
    EXPECT_NE(CodecManager::Instance().getCodec("CODEC_LZW"), nullptr);
    root.setRenderSystem(root.getAvailableRenderers()->back());

    root.unloadPlugins();
    EXPECT_EQ(debug.text(), "stop good_b with a log\nstop good_a with a log\n");
    EXPECT_TRUE(root.getAvailableRenderers()->empty());
    EXPECT_EQ(root.getRenderSystem(), nullptr);
    EXPECT_TRUE(root._fireFrameStarted(event) && root._fireFrameEnded(event));
    testing::internal::GetCapturedStderr();
}

// What cannot be loaded ends the constructor. The managers are then left standing, so that the host can log,
// until the next Root is made in the same process.
TEST_F(RootPluginsTest, AFailedStartLeavesTheLogAndCanBeRepeated)
{
    test::writeFile("text.so", "this is no module");
    // A config of null is no file at all.
    std::tuple<char const *, char const *, long long, char const *> const rows[] = {
        {"missing list", nullptr, 8, "'plugins.cfg' file not found!"},
        {"missing plugin", "PluginFolder=m/\nPlugin=good_a\nPlugin=missing\n", 9,
         "Error: DYNLIB_LOAD failed: m/missing.dll"},
        {"no module", "Plugin=./text\n", 9, "Error: DYNLIB_LOAD failed: ./text.dll"},
    };
    testing::internal::CaptureStderr();
    for (int round = 0; round < 3; ++round) {
        for (auto const &[what, config, number, description] : rows) {
            SCOPED_TRACE(what);
            std::filesystem::remove("plugins.cfg");
            if (config != nullptr) {
                test::writeFile("plugins.cfg", config);
            }
            try {
                Root root;
                ADD_FAILURE() << "nothing was thrown";
            } catch (Exception const &exception) {
                EXPECT_EQ(exception.getNumber(), number);
                EXPECT_STREQ(exception.description.c_str(), description);
            }
            EXPECT_FALSE(Root::InstanceActive());
            ASSERT_TRUE(LogManager::InstanceActive());
            logMessage("the host gives up\n", 2);
            std::string const text = test::readFile("debug.log");
            EXPECT_NE(text.find("Description: " + std::string(description)), std::string::npos);
            EXPECT_TRUE(text.ends_with("- <<callstack>>\nthe host gives up\n"));
        }
    }
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(debug.text(), "stop good_a\nstop good_a\nstop good_a\n") << "by the Root after each";

    EXPECT_NE(log("PluginFolder=m/\nPlugin=good_a\n").find("start good_a\n"), std::string::npos);
    EXPECT_FALSE(LogManager::InstanceActive());
}

TEST_F(RootPluginsTest, AManagerLoadsAFileOnceAndANameThatFailsAgain)
{
    LogManager logManager;
    PluginMgr manager;
    Plugin *const plugin = manager.load("m/no_start.dll");
    EXPECT_EQ(manager.load("m/no_start.dll"), plugin);
    EXPECT_NE(manager.load("./m/no_start.dll"), plugin) << "another name is another plugin";
    EXPECT_EQ(manager.load("m/no_start.so")->getSymbol("dllStopPlugin"), plugin->getSymbol("dllStopPlugin"));
    EXPECT_EQ(plugin->getSymbol("dllStartPlugin"), nullptr);
    for (int i = 0; i < 2; ++i) {
        EXPECT_THROW(manager.load("m/missing.dll"), Exception);
        EXPECT_STREQ(Exception::last->source.c_str(), "Plugin::load");
    }

    Plugin never("m/never.dll");
    EXPECT_EQ(never.getSymbol("dllStartPlugin"), nullptr);
    EXPECT_THROW(never.unload(), Exception);
    EXPECT_STREQ(Exception::last->description.c_str(), "Error: DYNLIB_UNLOAD failed: m/never.dll");
    manager.unload(plugin);
    EXPECT_NE(manager.load("m/no_start.dll"), nullptr);
}

// A text in every place that can hold one at the end: nothing of it is left when the engine is gone.
TEST_F(RootPluginsTest, TheEngineGivesItsMemoryBack)
{
    auto const liveBytes = [] {
        PoolHeap::ContextCounts counts;
        PoolHeap::context_counts(0x8C76F20, counts);
        return counts.liveBytes;
    };
    log("PluginFolder=m/\nPlugin=good_a\nPlugin=throws\nPlugin=good_b\n");
    std::uint64_t const before = liveBytes();
    log("PluginFolder=m/\nPlugin=good_a\nPlugin=throws\nPlugin=good_b\n");
    EXPECT_EQ(liveBytes(), before);
}

using TerminateTest = RootPluginsTest;

// Nothing above a thread's function catches, so an exception out of it ends the process with the stack, and
// with it the engine, still standing.
TEST_F(TerminateTest, AnUncaughtExceptionIsLoggedShownAndEndsTheProcess)
{
    test::writeFile("plugins.cfg", "");
    auto const die = [] {
        Root root("plugins.cfg", "a.log", true);
        throw Exception(9, "the level has no floor", "Game::load", "game.cpp", 12);
    };
    // On the error stream: the log's echo, then the dialog of the console platform plugin.
    EXPECT_EXIT(std::thread(die).join(), testing::ExitedWithCode(255),
                "handleTerminate.*\n(.*\n)*.*Description: the level has no floor(.*\n)*.*Line: 12");
    EXPECT_TRUE(test::readFile("a.log").ends_with(
        "An exception has been thrown!\nError #: 9\nFunction: Game::load\n"
        "Description: the level has no floor. \nFile: game.cpp\nLine: 12\n"
        "Stack unwinding:\n- <<callstack>>\ntermHandler()\nhandleTerminate()\n"));
}

TEST_F(TerminateTest, WithoutAnExceptionOfOursTheDialogSaysUnknown)
{
    test::writeFile("plugins.cfg", "");
    auto const die = [] {
        Root root("plugins.cfg", "a.log", true);
        Exception::last = nullptr; // an earlier test's
        throw 1;
    };
    EXPECT_EXIT(std::thread(die).join(), testing::ExitedWithCode(255),
                "termHandler..\nhandleTerminate..\n(.*\n)*.*handleTerminate: Unknown");
}

TEST_F(TerminateTest, AThreadThatFailsMeanwhileWaitsUntilTheUserHasSeenTheFirst)
{
    auto const slow = [](String const &text) {
        if (text == "handleTerminate()\n") {
            std::thread(handleTerminate).detach();
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
            std::fputs("seen\n", stderr);
        }
    };
    auto const die = [&slow] {
        LogManager manager;
        manager.createLog("a.log", true, false, false);
        manager.setDefaultCallback(slow);
        handleTerminate();
    };
    EXPECT_EXIT(die(), testing::ExitedWithCode(255), "^seen\n$");
}

TEST_F(TerminateTest, WithoutAnEngineItStillEndsTheProcess)
{
    EXPECT_EXIT(handleTerminate(), testing::ExitedWithCode(255), "^$");
}

} // namespace
} // namespace Qel
