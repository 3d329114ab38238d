#include "scriptCheck.h"

#include "System/File/fileMem.h"
#include "System/Graphics/model/md5Loader.h"
#include "System/Graphics/particle/particleAffector.h"
#include "System/Graphics/particle/particleEmitter.h"
#include "System/Graphics/particle/particleSystem.h"
#include "System/Graphics/particle/particleSystemMgr.h"
#include "System/System/exception.h"
#include "System/System/logManager.h"
#include "System/System/pluginMgr.h"
#include "Tools/model/modelCheck.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
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

// What is wrong with a text: of a script by its lines, of a model by its parts, which have no lines any more.
std::vector<std::string> findingsOf(std::string const &name, std::string const &text)
{
    std::vector<std::string> lines;
    auto const add = [&lines](std::vector<std::string> const &findings) {
        for (std::string const &finding : findings) {
            lines.push_back(" " + finding);
        }
    };
    Qel::MD5Mesh mesh;
    Qel::MD5Anim animation;
    switch (modelTextOf(text)) {
    case ModelText::MESH:
        Qel::MD5Loader().loadModel(name.c_str(), mesh);
        add(checkModel(mesh));
        break;
    case ModelText::ANIMATION:
        Qel::MD5Loader().loadAnim(name.c_str(), animation);
        add(checkAnimation(animation));
        break;
    case ModelText::NONE:
        for (Finding const &finding : checkParticleScript(text)) {
            lines.push_back(std::to_string(finding.line) + ": " + finding.text);
        }
        break;
    }
    return lines;
}

int lint(std::vector<std::string> const &files, bool isQuiet)
{
    int code = exitClean;
    for (std::string const &name : files) {
        Qel::cFileMem file;
        if (!file.open(name.c_str())) {
            std::fprintf(stderr, "qellint: cannot read %s\n", name.c_str());
            return exitUnread;
        }
        std::string const text(reinterpret_cast<char const *>(file.getData()), file.size());
        for (std::string const &finding : findingsOf(name, text)) {
            if (!isQuiet) {
                std::printf("%s:%s\n", name.c_str(), finding.c_str());
            }
            code = exitFindings;
        }
    }
    return code;
}

// Columns of a table in Markdown. What an object of the type begins with is its default.
void printParameters(Qel::StringInterface &object, std::size_t first, std::size_t end)
{
    constexpr char const *types[] = {"bool", "number", "integer", "integer, 0 or more"};
    std::printf("\n| Parameter | Type | Default | |\n|---|---|---|---|\n");
    auto const &all = object.getParameters();
    for (std::size_t i = first; i < std::min(end, all.size()); ++i) {
        char const *const type = all[i].paramType < std::size(types)   ? types[all[i].paramType]
                                 : all[i].paramType == Qel::PARAM_VEC3 ? "three numbers"
                                                                       : "text";
        std::printf("| `%s` | %s | %s | %s |\n", all[i].name.c_str(), type,
                    object.getParameter(all[i].name).c_str(), all[i].description.c_str());
    }
}

// What each keyword of a script can hold, out of the dictionaries.
void printReference()
{
    constexpr std::size_t all = ~std::size_t{0};
    Qel::ParticleSystemMgr &manager = Qel::ParticleSystemMgr::Instance();
    Qel::ParticleSystem system;
    std::printf("### particlesystem\n");
    printParameters(system, 0, all);
    std::size_t common = 0;
    for (Qel::String const &type : manager.getEmitterFactories()) {
        Qel::ParticleEmitter &emitter = *system.addEmitter(type);
        if (common == 0) {
            // Those of all come first, and the last of them is this one.
            auto const &list = emitter.getParameters();
            while (common < list.size() && list[common].name != "streak_size") {
                ++common;
            }
            std::printf("\n### emitter, of any type\n");
            ++common;
            printParameters(emitter, 0, common);
        }
        if (emitter.getParameters().size() > common) {
            std::printf("\n### emitter %s\n", type.c_str());
            printParameters(emitter, common, all);
        }
    }
    for (Qel::String const &type : manager.getAffectorFactories()) {
        std::printf("\n### affector %s\n", type.c_str());
        printParameters(*system.addAffector(type), 0, all);
    }
}

} // namespace

int main(int argc, char **argv)
{
    std::vector<std::string> files;
    std::vector<std::string> plugins;
    bool isQuiet = false;
    CLI::App app("Checks particle scripts, models and animations and says file, line and what is wrong.",
                 "qellint");
    auto *const scripts = app.add_option("FILE", files, "Scripts, models, animations");
    app.add_option("--plugin", plugins, "Plugins that bring the types; plugin_particlefx if none is named")
        ->type_name("FILE")
        ->allow_extra_args(false);
    app.add_flag("-q,--quiet", isQuiet, "Only the exit code");
    bool isReference = false;
    app.add_flag("--reference", isReference, "Print all types with their parameters, in Markdown")
        ->excludes(scripts);
    app.footer(
        "Exit codes: 0 nothing found, 1 something found, 2 mistake in the command line or a plugin that\n"
        "does not load, 3 a file cannot be read.");
    try {
        app.parse(argc, argv);
    } catch (CLI::ParseError const &mistake) {
        return app.exit(mistake) == 0 ? exitClean : exitUsage;
    }
    if (files.empty() && !isReference) {
        std::fprintf(stderr, "FILE is required\n");
        return exitUsage;
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
        if (isReference) {
            printReference();
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
