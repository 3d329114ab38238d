#include "frameClock.h"
#include "options.h"
#include "report.h"

#include "System/System/Root.h"
#include "System/System/exception.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <system_error>

namespace {

int fail(char const *what)
{
    std::fprintf(stderr, "qelHost: %s\n", what);
    return 1;
}

int runEngine(Options const &options)
{
    Qel::Root root(Qel::String(options.pluginFile.c_str()), Qel::String(options.logFile.c_str()), true);
    FrameClock clock(options.frames);
    root.addFrameListener(&clock);
    root.setMaxFrameRate(options.fps);
    root.run();
    root.removeFrameListener(&clock);
    printReport(options, root, clock);

    if (clock.frames() != options.frames) {
        return fail("the loop has ended early");
    }
    std::error_code unknown;
    std::uintmax_t const logged = std::filesystem::file_size(options.logFile, unknown);
    if (unknown || logged == 0) {
        return fail("the log has not been written");
    }
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    int exitCode = 0;
    std::optional<Options> const options = readOptions(argc, argv, exitCode);
    if (!options) {
        return exitCode;
    }
    try {
        return runEngine(*options);
    } catch (Qel::Exception const &exception) {
        return fail(exception.description.c_str());
    } catch (std::exception const &exception) {
        return fail(exception.what());
    }
}
