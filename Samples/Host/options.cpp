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

} // namespace

std::optional<Options> readOptions(int argc, char **argv, int &exitCode)
{
    Options options;
    options.pluginFile = usualPluginFile(argv[0]);

    int frames = settings::frames;
    int fps = settings::fps;
    std::vector<std::string> assignments;

    CLI::App app("Starts the engine, runs its frame loop for a while and reports how that went.", "qelHost");
    app.add_option("--frames", frames, "Frames to run")->check(CLI::PositiveNumber)->capture_default_str();
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
    app.add_option("--set", assignments, "Set a console variable, as often as wished")
        ->type_name("NAME=VALUE")
        ->allow_extra_args(false);
    app.add_flag("--list", options.list, "Show all console variables with their values and end");
    app.add_flag("--console", options.console, "Set and list them on the terminal while frames run");
    try {
        app.parse(argc, argv);
    } catch (CLI::ParseError const &mistake) {
        exitCode = app.exit(mistake);
        return std::nullopt;
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
