#include "scriptCheck.h"

#include "System/Graphics/particle/particleSystemMgr.h"
#include "System/System/exception.h"
#include "System/System/logManager.h"
#include "System/System/pluginMgr.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

enum ExitCode { exitClean = 0, exitFindings = 1, exitUsage = 2, exitUnread = 3 };

void call(Qel::Plugin &plugin, char const *name)
{
    if (void *const symbol = plugin.getSymbol(name)) {
        reinterpret_cast<void (*)()>(symbol)();
    }
}

int lint(std::vector<std::string> const &files, bool isQuiet)
{
    int code = exitClean;
    for (std::string const &name : files) {
        std::ifstream file(name, std::ios::binary);
        std::string const script{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        if (!file) {
            std::fprintf(stderr, "qellint: cannot read %s\n", name.c_str());
            return exitUnread;
        }
        for (Finding const &finding : checkParticleScript(script)) {
            if (!isQuiet) {
                std::printf("%s:%u: %s\n", name.c_str(), finding.line, finding.text.c_str());
            }
            code = exitFindings;
        }
    }
    return code;
}

} // namespace

int main(int argc, char **argv)
{
    std::vector<std::string> files;
    std::vector<std::string> plugins;
    bool isQuiet = false;
    CLI::App app("Checks particle scripts and says file, line and what is wrong.", "qellint");
    app.add_option("FILE", files, "Scripts")->required();
    app.add_option("--plugin", plugins, "Plugins that bring the types; plugin_particlefx if none is named")
        ->type_name("FILE")
        ->allow_extra_args(false);
    app.add_flag("-q,--quiet", isQuiet, "Only the exit code");
    app.footer(
        "Exit codes: 0 nothing found, 1 something found, 2 mistake in the command line or a plugin that\n"
        "does not load, 3 a file cannot be read.");
    try {
        app.parse(argc, argv);
    } catch (CLI::ParseError const &mistake) {
        return app.exit(mistake) == 0 ? exitClean : exitUsage;
    }
    if (plugins.empty()) {
        plugins.emplace_back("plugin_particlefx.dll");
    }
    try {
        Qel::LogManager log; // without a log: the findings are all there is to say
        Qel::PluginMgr modules;
        Qel::ParticleSystemMgr manager;
        std::vector<Qel::Plugin *> started;
        for (std::string const &name : plugins) {
            started.push_back(modules.load(name));
            call(*started.back(), "dllStartPlugin");
        }
        int const code = lint(files, isQuiet);
        for (Qel::Plugin *const plugin : started) {
            call(*plugin, "dllStopPlugin");
        }
        return code;
    } catch (Qel::Exception const &exception) {
        std::fprintf(stderr, "qellint: %s\n", exception.description.c_str());
        return exitUsage;
    }
}
