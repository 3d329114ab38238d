#include "Support/OS/messagePump.h"
#include "System/Platform/configDialog.h"
#include "System/Platform/errorDialog.h"
#include "System/Platform/inputReader.h"
#include "System/Platform/platformManager.h"
#include "System/Platform/splashDialog.h"
#include "System/System/Root.h"
#include "System/System/configFile.h"
#include "System/System/pluginMgr.h"
#include "Tests/Plugins/Platform/xServer.h"
#include "Tests/Tools/tempFolder.h"
#include "Tests/Tools/waitUntil.h"

#include <SDL.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <thread>
#include <utility>

#include <SDL_syswm.h> // the macros of X11 come last

namespace Qel {
namespace {

constexpr KeyCode keyA = static_cast<KeyCode>(4);
constexpr KeyCode keyReturn = static_cast<KeyCode>(40);

/// A window of the process and a reader of it. The test steers the reader's clock.
class ReaderTest : public testing::Test {
protected:
    void open()
    {
        ASSERT_EQ(SDL_InitSubSystem(SDL_INIT_VIDEO), 0) << SDL_GetError();
        window = SDL_CreateWindow("reader", 100, 100, 400, 300, SDL_WINDOW_RESIZABLE);
        ASSERT_NE(window, nullptr) << SDL_GetError();
        ASSERT_TRUE(reader->initialise(nullptr)) << "the only window";
        reader->setBufferedInput(true, false);
    }

    void TearDown() override
    {
        platform.destroyInputReader(reader);
        if (window != nullptr) {
            SDL_DestroyWindow(window);
            SDL_QuitSubSystem(SDL_INIT_VIDEO);
        }
    }

    template <class Condition>
    bool until(Condition condition)
    {
        return test::waitUntil([&] {
            reader->capture(now);
            xMoved += mouse.xMove;
            for (KeyEvent event; reader->getNextKey(event);) {
                typed += event.character != 0 ? std::u32string(1, event.character) : std::u32string();
            }
            return condition();
        });
    }

    bool isDown(KeyCode key) const { return reader->isKeyDown(key, KEY_DOWN); }

    PluginMgr plugins;
    PlatformManager platform;
    InputReader *reader = platform.createInputReader();
    MouseState const &mouse = reader->getMouseState();
    SDL_Window *window = nullptr;
    float now = 1.0f;
    int xMoved = 0;
    std::u32string typed;
};

class XDesktop {
protected:
    test::XServer server;
};

class DesktopReader : public XDesktop, public ReaderTest {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(server.isRunning()) << "Xvfb and xdotool are needed: scripts/setup.sh installs them";
        open();
        SDL_SysWMinfo info;
        SDL_VERSION(&info.version);
        ASSERT_TRUE(SDL_GetWindowWMInfo(window, &info));
        id = std::to_string(info.info.x11.window);
        rootId = std::to_string(DefaultRootWindow(info.info.x11.display));
        ASSERT_TRUE(server.xdotool("windowfocus --sync " + id));
        ASSERT_TRUE(until([&] { return reader->hasFocus(); }));
    }

    void movePointer(int x, int y)
    {
        server.xdotool("mousemove --window " + id + " " + std::to_string(x) + " " + std::to_string(y));
    }

    std::string id;
    std::string rootId;
};

TEST_F(DesktopReader, SeesKeysTypingAndTheLossOfTheFocus)
{
    server.xdotool("keydown shift keydown a");
    ASSERT_TRUE(until([&] { return isDown(keyA); }));
    EXPECT_EQ(reader->getKeyModifiers(), KEYMASK_SHIFT);
    now += 0.6f;
    reader->capture(now);
    EXPECT_TRUE(reader->isKeyDown(keyA, KEY_HELD));
    server.xdotool("keyup a keyup shift");
    ASSERT_TRUE(until([&] { return !isDown(keyA) && reader->getKeyModifiers() == 0; }));

    server.xdotool("type --delay 0 'b?x'");
    EXPECT_TRUE(until([&] { return typed == U"Ab?x"; })) << typed.size();
    EXPECT_EQ(reader->getLocalizedKeyName(keyReturn), L"Return");
    EXPECT_EQ(reader->getLocalizedKeyName(static_cast<KeyCode>(100000)), L"");

    EXPECT_TRUE(os::messagePump().inForeground());
    server.xdotool("keydown a mousedown 1 windowfocus " + rootId);
    ASSERT_TRUE(until([&] { return typed == U"Ab?xa" && !reader->hasFocus() && !isDown(keyA); }));
    EXPECT_EQ(mouse.buttons, 0);
    EXPECT_FALSE(os::messagePump().inForeground());
    server.xdotool("keyup a mouseup 1");
}

TEST_F(DesktopReader, SeesTheMouse)
{
    movePointer(50, 60);
    ASSERT_TRUE(until([&] { return mouse.x == 50 && mouse.y == 60 && !mouse.isOutside(); }));
    xMoved = 0;
    movePointer(70, 55);
    ASSERT_TRUE(until([&] { return mouse.x == 70 && mouse.y == 55; }));
    EXPECT_EQ(xMoved, 20);

    server.xdotool("click 1");
    ASSERT_TRUE(until([&] { return mouse.getClickCount(MOUSE_LEFT) == 1; }));
    now += 0.1f;
    server.xdotool("click 1");
    ASSERT_TRUE(until([&] { return mouse.getClickCount(MOUSE_LEFT) == 2; }));
    server.xdotool("mousedown 3");
    ASSERT_TRUE(until([&] { return mouse.isRightDown(KEY_DOWN); }));
    now += 0.6f;
    reader->capture(now);
    EXPECT_TRUE(mouse.isRightDown(KEY_HELD));
    server.xdotool("mouseup 3 click 4 click 4");
    ASSERT_TRUE(until([&] { return mouse.buttons == 0 && mouse.wheel == 2; }));
    EXPECT_EQ(mouse.getClickCount(MOUSE_RIGHT), 0) << "held is not clicked";

    server.xdotool("mousemove 5 5");
    EXPECT_TRUE(until([&] { return mouse.isOutside(); }));
    SDL_SetWindowSize(window, 200, 100);
    reader->setMousePosition(120, 90);
    EXPECT_TRUE(until([&] { return !mouse.isOutside() && SDL_GetMouseFocus() == window; }));
    int x = 0;
    int y = 0;
    SDL_GetMouseState(&x, &y);
    EXPECT_EQ(x + y, 120 + 90) << "the pointer itself";
}

TEST_F(DesktopReader, KeepsThePointerInAndMovesOnWhereNobodySeesIt)
{
    movePointer(50, 50);
    ASSERT_TRUE(until([&] { return mouse.x == 50; }));
    reader->setLockRect(10, 20, 100, 90);
    reader->capture(now);
    movePointer(390, 290);
    ASSERT_TRUE(until([&] { return mouse.x == 100 && mouse.y == 90; }));
    reader->setFreezeMouse(true);
    movePointer(30, 30);
    server.xdotool("mousedown 2");
    ASSERT_TRUE(until([&] { return mouse.isMiddleDown(KEY_DOWN); }));
    EXPECT_EQ(mouse.x, 100);
    server.xdotool("mouseup 2");
    reader->setFreezeMouse(false);

    reader->showPointer(false);
    ASSERT_TRUE(until([&] { return SDL_GetRelativeMouseMode() == SDL_TRUE; }));
    xMoved = 0;
    for (int i = 0; i < 20; ++i) {
        server.xdotool("mousemove_relative 50 0");
        reader->capture(now);
        xMoved += mouse.xMove;
    }
    EXPECT_TRUE(until([&] { return xMoved >= 900; })) << xMoved << ", where the screen ends at 800";
    EXPECT_EQ(mouse.x, 100);
    reader->unsetLockRect();
    reader->capture(now);
    EXPECT_FALSE(SDL_GetRelativeMouseMode());
}

/// Works a dialog in the background while the test waits for its answer.
class DesktopDialog : public XDesktop, public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(server.isRunning()) << "Xvfb and xdotool are needed: scripts/setup.sh installs them";
    }

    // Started before the dialog: else it would inherit the pipes that SDL reads to their ends, and keep them.
    void work(std::string const &title, std::string const &actions)
    {
        server.xdotoolLater("search --sync --onlyvisible --name '^" + title + "$' windowfocus --sync " +
                            actions);
    }

    bool configure(std::string const &actions)
    {
        work("Settings", actions);
        ConfigDialog *const dialog = platform.createConfigDialog();
        bool const answer = dialog->display();
        platform.destroyConfigDialog(dialog);
        return answer;
    }

    test::TempFolder folder;
    PluginMgr plugins;
    PlatformManager platform;
};

TEST_F(DesktopDialog, ConfiguresByKeysAndMouseIntoAFile)
{
    test::writeFile("platform.cfg", "Width = 800\nHeight = 600\nOwn = kept\n");
    EXPECT_FALSE(configure("key --window 0 Up Escape"));
    EXPECT_EQ(test::readFile("platform.cfg").find("640"), std::string::npos);

    // Full screen on, volume two steps down; return accepts wherever the focus is.
    EXPECT_TRUE(configure("key --window 0 Up Tab space Tab Tab Left Left Return"));
    EXPECT_EQ(test::readFile("platform.cfg"), "ConfigDialog = start\nFullScreen = true\nHeight = 480\n"
                                              "Own = kept\nSound = true\nVolume = 70\nWidth = 640\n");

    // The second resolution, sound off, volume at its end; then OK.
    EXPECT_TRUE(configure("mousemove --window %1 60 78 click 1 mousemove --window %1 254 90 click 1 "
                          "mousemove --window %1 300 166 mousedown 1 mousemove --window %1 455 166 mouseup 1 "
                          "mousemove --window %1 290 288 click 1"));
    ConfigFile config;
    config.load("platform.cfg", "=");
    EXPECT_EQ(config.getSetting("Width"), "800");
    EXPECT_EQ(config.getSetting("Sound"), "false");
    EXPECT_EQ(config.getSetting("Volume"), "100");
}

TEST_F(DesktopDialog, ShowsErrorsAndASplashThatTakesItsMessages)
{
    work("Error", "key --window 0 Return");
    ErrorDialog *const error = platform.createErrorDialog();
    testing::internal::CaptureStderr();
    error->display("it broke", "here, and " + String(4000, 'x'));
    EXPECT_EQ(testing::internal::GetCapturedStderr().find("it broke"), std::string::npos);
    platform.destroyErrorDialog(error);

    SplashDialog *const splash = platform.createSplashDialog();
    ASSERT_TRUE(splash->display());
    for (float fraction : {0.5f, 7.0f, -1.0f, std::nanf("")}) {
        splash->setProgress(fraction);
    }
    EXPECT_TRUE(server.xdotool("search --sync --onlyvisible --name '^Starting$'"));
    os::MessagePump &pump = os::messagePump();
    EXPECT_TRUE(test::waitUntil([&] {
        os::Message message;
        return pump.peek(message, true) && !pump.isDialogMessage(&pump, message) &&
               pump.isDialogMessage(message.window, message);
    })) << "to be drawn anew";
    platform.destroySplashDialog(splash);
    EXPECT_EQ(SDL_WasInit(SDL_INIT_VIDEO), 0u);
}

/// Without a display: what SDL tells is made up.
class DummyReader : public ReaderTest {
protected:
    void SetUp() override
    {
        setenv("SDL_VIDEODRIVER", "dummy", 1);
        open();
    }

    void push(SDL_Event event, Uint32 type)
    {
        event.type = type;
        event.window.windowID = SDL_GetWindowID(window);
        SDL_PushEvent(&event);
    }

    void pushKey(Uint32 type, SDL_Scancode code)
    {
        SDL_Event event{};
        event.key.keysym.scancode = code;
        push(event, type);
    }

    void pushText(char const *text)
    {
        SDL_Event event{};
        SDL_strlcpy(event.text.text, text, sizeof event.text.text);
        push(event, SDL_TEXTINPUT);
    }
};

TEST_F(DummyReader, KeepsTypedCharactersWithTheirKeysWhoeverEmptiesTheQueue)
{
    pushKey(SDL_KEYDOWN, SDL_SCANCODE_A);
    pushText("\xC3\xA4\xE2\x82\xAC"); // of one key, as a layout may have it
    pushText("\xF0\x9F\x8E\xB2");     // of an input method
    pushKey(SDL_KEYUP, SDL_SCANCODE_A);
    os::Message message;
    while (os::messagePump().peek(message, true)) {
        os::messagePump().dispatch(message);
    }
    reader->capture(now);
    std::pair<KeyCode, char32_t> const expected[] = {
        {keyA, U'\u00E4'}, {KEY_NONE, U'\u20AC'}, {KEY_NONE, U'\U0001F3B2'}};
    for (auto const &[key, character] : expected) {
        KeyEvent event;
        ASSERT_TRUE(reader->getNextKey(event));
        EXPECT_EQ(event.key, key);
        EXPECT_EQ(event.character, character);
    }
    EXPECT_TRUE(isDown(keyA)) << "comes up in the next update";
    EXPECT_FALSE(isDown(KEY_NONE));
    reader->capture(now);
    EXPECT_FALSE(isDown(keyA));

    for (int i = 0; i < 5000; ++i) {
        pushKey(i < 4999 ? SDL_KEYDOWN : SDL_KEYUP, SDL_SCANCODE_A);
        SDL_FlushEvent(SDL_KEYDOWN);
    }
    EXPECT_TRUE(until([&] { return !isDown(keyA); }))
        << "more than there is room for, its release at the end";
    EXPECT_TRUE(os::messagePump().inForeground()) << "nothing is in front of a window that nobody sees";
}

TEST_F(DummyReader, ReadsNoWindowAmongSeveral)
{
    SDL_Window *const second = SDL_CreateWindow("second", 0, 0, 10, 10, 0);
    EXPECT_FALSE(reader->initialise(nullptr));
    reader->feedKey({keyA, true, 0, 0});
    reader->capture(now);
    EXPECT_TRUE(isDown(keyA)) << "still fed";
    EXPECT_TRUE(reader->initialise(second));
    pushKey(SDL_KEYDOWN, SDL_SCANCODE_A);
    reader->capture(now);
    EXPECT_FALSE(isDown(keyA)) << "of the other window";
    SDL_DestroyWindow(second);
    reader->setMousePosition(3, 4);
    reader->capture(now);
    EXPECT_EQ(mouse.x, 3) << "its window is gone";
}

TEST(DesktopMessages, EndTheLoopUnlessTheHostHasItsOwnMind)
{
    setenv("SDL_VIDEODRIVER", "dummy", 1);
    test::TempFolder const folder;
    test::writeFile("plugins.cfg", "");
    ASSERT_EQ(SDL_InitSubSystem(SDL_INIT_VIDEO), 0);
    {
        Root root("plugins.cfg", "debug.log", false);
        int asked = 0;
        os::setQuitHandler([&asked] { return ++asked == 1; });
        struct Quitter final : FrameListener {
            bool frameStarted(FrameEvent const &) override
            {
                SDL_Event event{};
                event.type = SDL_QUIT;
                return ++frames < 100 && SDL_PushEvent(&event) == 1;
            }
            int frames = 0;
        } quitter;
        root.addFrameListener(&quitter);
        std::thread([] { os::defaultMessagePump().post({nullptr, SDL_QUIT, 0, 0}); }).join();
        root.run();
        EXPECT_EQ(asked, 2) << "what is posted is not SDL's";
        EXPECT_EQ(quitter.frames, 3) << "the frame of the second answer still runs";
        os::setQuitHandler(nullptr);
        root.removeFrameListener(&quitter);
    }
    EXPECT_EQ(os::installedMessagePump(), nullptr) << "gone with the plugin";
    SDL_QuitSubSystem(SDL_INIT_VIDEO);
}

} // namespace
} // namespace Qel
