#include "options.h"

#include <CLI/CLI.hpp>

#include <filesystem>

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

    CLI::App app("Starts the engine, runs its frame loop for a while and reports how that went.", "qelHost");
    app.add_option("--frames", options.frames, "Frames to run")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    app.add_option("--fps", options.fps, "Frames a second at most, 0 for no limit")
        ->check(CLI::Range(0u, 1000u))
        ->capture_default_str();
    app.add_option("--plugins", options.pluginFile, "Plugin list")->type_name("FILE")->capture_default_str();
    app.add_option("--log", options.logFile, "Log file, replaced at each start")
        ->type_name("FILE")
        ->capture_default_str();
    try {
        app.parse(argc, argv);
    } catch (CLI::ParseError const &mistake) {
        exitCode = app.exit(mistake);
        return std::nullopt;
    }
    return options;
}
