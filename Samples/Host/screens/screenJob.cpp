#include "screenJob.h"

#include "fileScreen.h"
#include "fontScreen.h"
#include "frameScreen.h"
#include "imageScreen.h"
#include "modelView.h"
#include "particleView.h"
#include "soundScreen.h"
#include "taskScreen.h"
#include "window.h"

#include "Samples/Host/frameClock.h"
#include "Samples/Host/workload.h"

#include "System/Platform/win32Font.h"
#include "System/System/Root.h"
#include "System/System/consoleVar.h"

#include "Tools/picture/pngFile.h"

#include <cstdio>
#include <cstdlib>
#include <optional>

namespace {

bool fail(char const *what)
{
    std::fprintf(stderr, "qelHost: %s\n", what);
    return false;
}

std::optional<FontAtlas> makeFont()
{
    for (char const *const family : {"DejaVu Sans", "Noto Sans", "Liberation Sans", "FreeSans", "Arial"}) {
        Qel::Win32Font font;
        if (font.create(family, 16, 400, 0, 0, Qel::Win32Font::ANTIALIASED)) {
            return FontAtlas(font);
        }
    }
    return std::nullopt;
}

// In the order of their keys.
std::vector<std::unique_ptr<Screen>> makeScreens(Options const &options, Workload &workload,
                                                 MediaJob const *media,
                                                 std::unique_ptr<ConsoleScreen> console)
{
    std::string const &folder = options.usualMedia;
    std::vector<std::unique_ptr<Screen>> screens;
    screens.push_back(std::make_unique<FrameScreen>());
    screens.push_back(std::make_unique<FileScreen>(media));
    screens.push_back(std::make_unique<ImageScreen>(options.media.folder));
    screens.push_back(std::make_unique<ParticleView>(folder + "/particles"));
    screens.push_back(std::make_unique<ModelView>(folder + "/figure"));
    screens.push_back(std::make_unique<SoundScreen>(folder + "/scene"));
    screens.push_back(std::make_unique<TaskScreen>(workload));
    screens.push_back(std::move(console));
    screens.push_back(std::make_unique<FontScreen>());
    return screens;
}

class Listening {
public:
    Listening(Qel::Root &root, Qel::FrameListener &listener) : m_root(root), m_listener(listener)
    {
        m_root.addFrameListener(&m_listener);
    }
    ~Listening() { m_root.removeFrameListener(&m_listener); }

    Listening(Listening const &) = delete;
    Listening &operator=(Listening const &) = delete;

private:
    Qel::Root &m_root;
    Qel::FrameListener &m_listener;
};

} // namespace

bool showScreens(Options const &options)
{
    if (options.window && std::getenv("DISPLAY") == nullptr && std::getenv("WAYLAND_DISPLAY") == nullptr) {
        return fail("there is no display for a window");
    }
    if (options.headless) {
        setenv("SDL_VIDEODRIVER", "dummy", 1); // whatever display there is
    }
    Qel::Root root(options.pluginFile, options.logFile, true);
    if (options.headless) {
        Qel::ConsoleVar::Instance().setConfigurable("openal.device", "loopback"); // nor is anything heard
    }
    if (root.getAvailableRenderers()->empty()) {
        return fail("there is no plugin that draws");
    }
    Qel::RenderSystem &renderer = *root.getAvailableRenderers()->front();
    std::optional<FontAtlas> const font = makeFont();
    if (!font) {
        return fail("there is no font to write with");
    }
    root.setRenderSystem(&renderer);
    renderer.setWaitForVerticalBlank(!options.headless);
    if (!renderer.initialise(nullptr, Window::usualWidth, Window::usualHeight, false)) {
        return fail("there is no window to draw into, the log says why");
    }

    bool const endsByItself = options.headless || options.hasFrames;
    FrameClock clock([endsByItself] { return endsByItself; });
    Workload workload(options.profileFile);
    std::optional<MediaJob> media;
    if (options.hasUserMedia || MediaJob::canMount(options.media)) {
        media.emplace(options.media, true);
    }
    auto console = std::make_unique<ConsoleScreen>();
    ConsoleScreen &typedInto = *console;
    bool isDone = true;
    {
        Window window(renderer, *font,
                      makeScreens(options, workload, media ? &*media : nullptr, std::move(console)),
                      typedInto);
        if (!options.screen.empty() && !window.show(options.screen)) {
            isDone = fail("there is no such screen");
        } else {
            if (options.headless) {
                window.warmUp();
            }
            Listening const byClock(root, clock);
            Listening const byWorkload(root, workload);
            std::optional<Listening> byMedia;
            if (media) {
                byMedia.emplace(root, *media);
            }
            Listening const byWindow(root, window);
            root.run();
            if (!options.screenshot.empty() && !writePng(options.screenshot, window.picture())) {
                isDone = fail("the picture cannot be written");
            }
        }
    }
    workload.finish();
    root.setRenderSystem(nullptr);
    return isDone;
}
