#include "System/Platform/configDialog.h"
#include "System/Platform/errorDialog.h"
#include "System/Platform/inputReader.h"
#include "System/Platform/platformManager.h"
#include "System/Platform/splashDialog.h"
#include "System/System/pluginMgr.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <stdlib.h>

namespace Qel {
namespace {

bool isMapped()
{
    std::ifstream maps("/proc/self/maps");
    std::string const all(std::istreambuf_iterator<char>(maps), {});
    return all.find("plugin_win32platform") != std::string::npos;
}

struct PlatformPlugin : testing::Test {
    PlatformPlugin() { setenv("SDL_VIDEODRIVER", "dummy", 1); }

    PluginMgr plugins;
    PlatformManager platform;
};

TEST(PlatformPluginLoading, IsLoadedAndGoneTwice)
{
    for (int round = 0; round < 2; ++round) {
        {
            PluginMgr plugins;
            PlatformManager platform;
            EXPECT_TRUE(isMapped());
            platform.destroyConfigDialog(platform.createConfigDialog());
            platform.destroyInputReader(platform.createInputReader());
            platform.destroySplashDialog(platform.createSplashDialog());
            platform.destroyErrorDialog(nullptr);
        }
        EXPECT_FALSE(isMapped());
    }
}

TEST_F(PlatformPlugin, WritesAnErrorToTheErrorStream)
{
    ErrorDialog *const dialog = platform.createErrorDialog();
    ASSERT_NE(dialog, nullptr);
    testing::internal::CaptureStderr();
    dialog->display("it broke", "here\n");
    dialog->display("100% %s", "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "it broke\nhere\n100% %s\n");
    platform.destroyErrorDialog(dialog);
}

TEST_F(PlatformPlugin, AnswersTheConfigDialogFromAFileOrSaysNo)
{
    ConfigDialog *const dialog = platform.createConfigDialog();
    ASSERT_NE(dialog, nullptr);
    auto const before = std::filesystem::current_path();
    auto const folder = std::filesystem::temp_directory_path() / "qelPlatformPlugin";
    std::filesystem::create_directories(folder);
    std::filesystem::current_path(folder);

    EXPECT_FALSE(dialog->display()) << "no file";
    struct {
        char const *text;
        bool answer;
    } const rows[] = {
        {"ConfigDialog = start\n", true}, {"ConfigDialog=stop\n", false}, {"Other=start\n", false}};
    for (auto const &row : rows) {
        std::ofstream("platform.cfg") << row.text;
        EXPECT_EQ(dialog->display(), row.answer) << row.text;
    }
    std::filesystem::current_path(before);
    std::filesystem::remove_all(folder);
    platform.destroyConfigDialog(dialog);
}

constexpr KeyCode space = static_cast<KeyCode>(44);

struct FedReader : PlatformPlugin {
    FedReader() { reader->initialise(nullptr); }
    ~FedReader() override { platform.destroyInputReader(reader); }

    void key(bool down, std::uint32_t modifiers = 0) { reader->feedKey({space, down, U' ', modifiers}); }
    void mouse(std::int32_t x, std::int32_t y, unsigned buttons)
    {
        reader->feedMouse({x, y, 0, static_cast<std::uint16_t>(buttons)});
    }

    // The four states as letters: down, pressed, released, held.
    std::string keyStates(float now)
    {
        reader->capture(now);
        std::string states;
        for (unsigned state = 0; state < 4; ++state) {
            states += reader->isKeyDown(space, static_cast<KeyState>(state)) ? "DPRH"[state] : '-';
        }
        return states;
    }

    InputReader *reader = platform.createInputReader();
};

TEST_F(FedReader, ShowsAKeyFromPressToRelease)
{
    EXPECT_EQ(keyStates(0.0f), "----");
    key(true, KEYMASK_SHIFT);
    EXPECT_EQ(keyStates(1.0f), "DP--");
    EXPECT_TRUE(reader->getKeyModifier(KEYMASK_SHIFT));
    EXPECT_EQ(keyStates(1.5f), "D---") << "exactly the hold time";
    EXPECT_EQ(keyStates(1.75f), "D--H");
    key(false);
    EXPECT_EQ(keyStates(2.0f), "--R-");
    EXPECT_EQ(keyStates(2.1f), "----");
}

TEST_F(FedReader, LosesNoTapBetweenTwoUpdates)
{
    for (bool down : {true, false, true, false}) {
        key(down);
        mouse(0, 0, down ? 1 : 0);
    }
    std::string buttons;
    for (char const *expected : {"DP--", "--R-", "DP--", "--R-", "----"}) {
        EXPECT_EQ(keyStates(1.0f), expected);
        MouseState const &state = reader->getMouseState();
        buttons += state.isLeftDown(KEY_PRESSED) ? 'P' : state.isLeftDown(KEY_RELEASED) ? 'R' : '-';
    }
    EXPECT_EQ(buttons, "PRPR-");
    EXPECT_EQ(reader->getMouseState().getClickCount(MOUSE_LEFT), 2);
}

TEST_F(FedReader, CountsClicksThatAreQuickAndCloseTogether)
{
    struct {
        float down, up;
        unsigned count;
    } const rows[] = {
        {0.01f, 0.02f, 1}, // soon after the clock's zero: still the first one
        {0.05f, 0.10f, 2}, {0.15f, 0.20f, 3}, {1.00f, 1.05f, 1}, {1.10f, 1.90f, 0}, // held
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.down);
        mouse(0, 0, MOUSE_RIGHT);
        reader->capture(row.down);
        mouse(0, 0, 0);
        reader->capture(row.up);
        EXPECT_EQ(reader->getMouseState().getClickCount(MOUSE_RIGHT), row.count);
        EXPECT_EQ(reader->getMouseState().clickButtons, row.count > 0 ? 2 : 0);
        EXPECT_EQ(reader->getMouseState().multiClickButtons, row.count > 1 ? 2 : 0);
    }
}

TEST_F(FedReader, MovesWithinTheLockRectAndNotAtAllWhenFrozen)
{
    MouseState const &state = reader->getMouseState();
    reader->setMouseArea(100, 100);
    mouse(150, 20, 0);
    mouse(0, 5, 0);
    reader->capture(0.0f);
    EXPECT_EQ(state.x, 150);
    EXPECT_EQ(state.y, 25);
    EXPECT_EQ(state.yMove, 25);
    EXPECT_TRUE(state.isOutside());

    reader->setLockRect(90, 90, 10, 10);
    mouse(2147483647, -2147483647, 0);
    mouse(2147483647, -2147483647, 0);
    reader->capture(0.0f);
    EXPECT_EQ(state.x, 90);
    EXPECT_EQ(state.y, 10);
    EXPECT_EQ(state.xMove, 2147483647);
    EXPECT_FALSE(state.isOutside());

    reader->setFreezeMouse(true);
    mouse(-5, 5, MOUSE_MIDDLE);
    reader->capture(0.0f);
    EXPECT_EQ(state.x, 90);
    EXPECT_EQ(state.xMove, 0);
    EXPECT_TRUE(state.isMiddleDown(KEY_PRESSED));
}

TEST_F(FedReader, BuffersWhatIsAskedForAndNeverGrowsWithoutEnd)
{
    KeyEvent event;
    key(true);
    reader->capture(0.0f);
    EXPECT_FALSE(reader->getNextKey(event));

    reader->setBufferedInput(true, false);
    for (std::uint32_t i = 0; i < 10000; ++i) {
        key(true, i); // repeats
    }
    reader->capture(0.0f);
    unsigned taken = 0;
    while (reader->getNextKey(event)) {
        ++taken;
    }
    EXPECT_EQ(taken, 256u);
    EXPECT_EQ(event.modifiers, 9999u) << "the newest ones stay";

    key(false);
    reader->release();
    EXPECT_EQ(keyStates(0.0f), "----");
}

} // namespace
} // namespace Qel
