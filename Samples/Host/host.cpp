#include "console.h"
#include "frameClock.h"
#include "mediaJob.h"
#include "modelScreen.h"
#include "options.h"
#include "particleScreen.h"
#include "pictures.h"
#include "report.h"
#include "screens/screenJob.h"
#include "settings.h"
#include "terminalConsole.h"
#include "workload.h"

#include "System/File/archiveManager.h"
#include "System/System/Root.h"
#include "System/System/configFile.h"
#include "System/System/exception.h"
#include "System/System/logManager.h"
#include "Tools/picture/pngFile.h"

#include <chrono>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <optional>
#include <set>
#include <string>

namespace {

int fail(char const *what)
{
    std::fprintf(stderr, "qelHost: %s\n", what);
    return 1;
}

std::size_t listedPlugins(std::string const &pluginFile)
{
    Qel::ConfigFile config;
    config.load(pluginFile, "=");
    Qel::StringVector const names = config.getMultiSetting("Plugin");
    return std::set<Qel::String>(names.begin(), names.end()).size();
}

bool logHolds(std::string const &logFile, std::string const &text)
{
    std::ifstream file(logFile);
    std::string const all{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    return all.find(text) != std::string::npos;
}

bool hasArchiveTypes()
{
    auto const &types = Qel::ArchiveManager::Instance().getArchiveFactories();
    return types.contains("FILESYSTEM") && types.contains("ZIP");
}

int runEngine(Options const &options)
{
    // Tells the log of this run from one that an earlier run has left.
    auto const now = std::chrono::system_clock::now().time_since_epoch().count();
    std::string const mark = "qelHost: run " + std::to_string(now) + "\n";

    Qel::Root root(options.pluginFile, options.logFile, true);
    Qel::logMessage(mark, 2);
    std::optional<MediaJob> media;
    if (options.hasUserMedia || (!options.media.list.empty() && hasArchiveTypes())) {
        media.emplace(options.media, options.console);
    }
    FrameClock clock([&media] { return !media || media->isDone(); });
    root.addFrameListener(&clock);
    Workload workload(options.profileFile);
    root.addFrameListener(&workload);
    if (media) {
        root.addFrameListener(&*media);
    }
    bool left = false; // by the user, before the last frame
    if (options.console) {
        TerminalConsole terminal;
        root.addFrameListener(&terminal);
        root.run();
        root.removeFrameListener(&terminal);
        left = clock.frames() < settings::frames || (media && !media->isDone());
    } else {
        root.run();
    }
    if (media) {
        root.removeFrameListener(&*media);
    }
    root.removeFrameListener(&workload);
    root.removeFrameListener(&clock);
    workload.finish();
    Pictures const pictures(options.media.folder);
    bool const isSheetWritten =
        options.contactSheet.empty() || writePng(options.contactSheet, pictures.contactSheet());
    printReport(options, root, clock, workload, media ? &*media : nullptr, pictures);

    if (!isSheetWritten) {
        return fail("the contact sheet has not been written");
    }

    if (workload.primes() != Workload::primesThatThereAre()) {
        return fail("the tasks have counted wrongly");
    }

    if (!left && media && !media->isRight()) {
        return fail("the media are not what they should be");
    }
    if (!left && clock.frames() < settings::frames) {
        return fail("the loop has ended early");
    }
    if (root.getPlugins().size() != listedPlugins(options.pluginFile)) {
        return fail("a plugin of the list has been left out, the log says why");
    }
    if (!logHolds(options.logFile, mark)) {
        return fail("the log has not been written");
    }
    return 0;
}

int showParticles(Options const &options)
{
    Qel::Root root(options.pluginFile, options.logFile, true);
    ParticleScreen screen(options.particleFolder, options.watch);
    if (screen.isEmpty()) {
        return fail("there are no particle scripts");
    }
    if (options.watch) {
        std::puts(screen.isWatching() ? "watching the scripts" : "the scripts cannot be watched");
        std::fflush(stdout); // somebody waits for it
    }
    screen.warmUp(ParticleScreen::richTime);
    FrameClock clock([] { return true; });
    root.addFrameListener(&clock);
    root.addFrameListener(&screen);
    root.run();
    root.removeFrameListener(&screen);
    root.removeFrameListener(&clock);
    screen.print();
    if (!options.screenshot.empty() && !writePng(options.screenshot, screen.picture())) {
        return fail("the picture cannot be written");
    }
    return 0;
}

int showSound(Options const &options)
{
    Qel::Root const root(options.pluginFile, options.logFile, true);
    return playSoundScene(options.sound) ? 0 : 1;
}

} // namespace

int main(int argc, char **argv)
{
    int exitCode = 0;
    std::optional<Options> const options = readOptions(argc, argv, exitCode);
    if (!options) {
        return exitCode;
    }
    if (options->list) {
        for (std::string const &line : console::list()) {
            std::puts(line.c_str());
        }
        return 0;
    }
    if (!options->model.mesh.empty()) {
        return showModel(options->model) ? 0 : 1;
    }
    if (options->console && !TerminalConsole::available()) {
        return fail("--console needs a terminal");
    }
    try {
        if (options->window || options->headless) {
            return showScreens(*options) ? 0 : 1;
        }
        if (options->sound.wanted) {
            return showSound(*options);
        }
        return options->particles ? showParticles(*options) : runEngine(*options);
    } catch (Qel::Exception const &exception) {
        return fail(exception.description.c_str());
    } catch (std::exception const &exception) {
        return fail(exception.what());
    }
}
