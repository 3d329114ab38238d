#include "options.h"

#include "console.h"
#include "settings.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace {

std::string usualPluginFile(char const *program)
{
    char const *const name = "plugins.cfg";
    std::error_code unknown;
    if (std::filesystem::exists(name, unknown)) {
        return name;
    }
    return (std::filesystem::path(program).parent_path() / name).string();
}

// Those that the build has made; nothing if they are not there.
MediaPlaces usualMedia(char const *program)
{
    std::filesystem::path const base = std::filesystem::path(program).parent_path();
    MediaPlaces const places{(base / "media").string(), (base / "media.zip").string(),
                             (base / "media.crc").string()};
    std::error_code unknown;
    return std::filesystem::exists(places.list, unknown) ? places : MediaPlaces{};
}

} // namespace

std::optional<Options> readOptions(int argc, char **argv, int &exitCode)
{
    Options options;
    options.pluginFile = usualPluginFile(argv[0]);

    int frames = settings::frames;
    int fps = settings::fps;
    std::vector<std::string> assignments;

    CLI::App app("Starts the engine, runs its frame loop for a while and reports how that went.", "qelHost");
    app.add_option("--frames", frames, "Frames to run; more if the media take longer")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    app.add_option("--fps", fps, "Frames a second at most, 0 for no limit")
        ->check(CLI::Range(0, 1000))
        ->capture_default_str();
    app.add_option("--plugins", options.pluginFile, "Plugin list")->type_name("FILE")->capture_default_str();
    app.add_option("--log", options.logFile, "Log file, replaced at each start")
        ->type_name("FILE")
        ->capture_default_str();
    app.add_option("--profile", options.profileFile, "Where the timeline of a few frames is written")
        ->type_name("FILE")
        ->capture_default_str();
    app.add_option("--media", options.media.folder,
                   "Folder to load all files of, in place of the usual media")
        ->type_name("DIR");
    app.add_option("--zip", options.media.zip, "Zip file to load all files of, in place of the usual media")
        ->type_name("FILE");
    CLI::Option *const model =
        app.add_option("--model", options.model.mesh, "Show a model in place of all else")->type_name("FILE");
    app.add_option("--animation", options.model.animations, "Pose it; as often as wished")
        ->type_name("FILE")
        ->allow_extra_args(false)
        ->needs(model);
    app.add_option("--screenshot", options.screenshot,
                   "PNG file to draw the model, the particles or the screen of the last frame into")
        ->type_name("FILE");
    app.add_option("--contact-sheet", options.contactSheet, "PNG to write with all pictures of the folder")
        ->type_name("FILE");
    app.add_option("--set", assignments, "Set a console variable, as often as wished")
        ->type_name("NAME=VALUE")
        ->allow_extra_args(false);
    app.add_flag("--list", options.list, "Show all console variables with their values and end");
    app.add_flag("--console", options.console, "Set and list them on the terminal while frames run");
    auto *const particles = app.add_flag("--particles", options.particles,
                                         "Show the particle scripts of media/particles, or of the folder of "
                                         "--media, in place of the usual work");
    app.add_flag("--watch", options.watch, "Read particle scripts again when they are saved")
        ->needs(particles);
    auto *const sound =
        app.add_flag("--sound", options.sound.wanted, "Play a scene of sounds in place of the usual work");
    auto *const window = app.add_flag(
        "--window", options.window, "Show what goes on in a window, until it is closed or --frames are over");
    auto *const headless =
        app.add_flag("--headless", options.headless, "Draw without a display, for --screenshot");
    window->excludes(headless);
    app.add_option("--screen", options.screen,
                   "frames, files, images, particles, model, sound, tasks, console or fonts")
        ->type_name("NAME");
    app.add_option("--audio-file", options.sound.audioFile, "WAV file to render it into, unheard")
        ->type_name("FILE")
        ->needs(sound);
    try {
        app.parse(argc, argv);
        bool const hasScreens = options.window || options.headless;
        if (!options.screenshot.empty() && !options.particles && options.model.mesh.empty() && !hasScreens) {
            throw CLI::RequiresError("--screenshot", "--model, --particles, --window or --headless");
        }
        if (!options.screen.empty() && !hasScreens) {
            throw CLI::RequiresError("--screen", "--window or --headless");
        }
    } catch (CLI::ParseError const &mistake) {
        exitCode = app.exit(mistake);
        return std::nullopt;
    }
    options.model.screenshot = options.screenshot;
    options.hasFrames = app.count("--frames") > 0;
    options.usualMedia = (std::filesystem::path(argv[0]).parent_path() / "media").string();
    options.sound.folder = options.usualMedia + "/scene";
    options.particleFolder =
        options.media.folder.empty() ? options.usualMedia + "/particles" : options.media.folder;
    options.hasUserMedia = !options.media.folder.empty() || !options.media.zip.empty();
    if (!options.hasUserMedia) {
        options.media = usualMedia(argv[0]);
    }
    settings::frames = frames;
    settings::fps = fps;
    for (std::string const &assignment : assignments) {
        std::string mistake;
        if (!console::set(assignment, mistake)) {
            std::fprintf(stderr, "qelHost: %s\n", mistake.c_str());
            exitCode = 2;
            return std::nullopt;
        }
    }
    return options;
}
