#include "report.h"

#include "settings.h"

#include "System/System/plugin.h"
#include "System/Time/osInfo.h"
#include "System/Time/processorInfo.h"
#include "System/Time/timer.h"

#include "Support/PoolHeap/poolHeap.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

void printMemory()
{
    std::vector<PoolHeap::ContextCounts> contexts(PoolHeap::all_context_counts(nullptr, 0));
    contexts.resize(
        std::min(contexts.size(), PoolHeap::all_context_counts(contexts.data(), contexts.size())));
    std::printf("memory        %-22s %12s %12s %12s\n", "context", "allocations", "bytes now", "bytes peak");
    for (PoolHeap::ContextCounts const &context : contexts) {
        char const *const name = context.name != nullptr ? context.name : "(no name)";
        std::printf("              %-22s %12" PRIu64 " %12" PRIu64 " %12" PRIu64 "\n", name,
                    context.allocations, context.liveBytes, context.peakBytes);
    }
}

void printMachine()
{
    Qel::ProcessorInfo const &processor = Qel::ProcessorInfo::Instance();
    std::printf("processor     %s, %d logical in %d package(s)%s%s%s\n", processor.getCpuName(),
                processor.getLogicalCPUs(), processor.getPhysicalCPUs(), processor.hasSSE() ? ", SSE" : "",
                processor.hasSSE2() ? ", SSE2" : "", processor.hasSSE3() ? ", SSE3" : "");
    std::printf("counter       %.3f MHz, system %s\n", static_cast<double>(processor.getMHZ()),
                Qel::OsInfo::os_getString());
}

void printWork(Workload &workload)
{
    std::printf("tasks         %zu on %u workers, %u primes below 100000\n", workload.tasks(),
                workload.workers(), workload.primes());
    for (unsigned i = 0; i < workload.workers(); ++i) {
        std::printf("              worker %u, load %.0f %%\n", i, static_cast<double>(workload.load(i)));
    }
    std::printf("profile       %-22s %12s %12s\n", "scope", "calls", "ms in all");
    for (Qel::ProfileNode const *node = workload.profile().getRoot()->getChild(); node != nullptr;
         node = node->getSibling()) {
        std::printf("              %-22s %12d %12.3f\n", node->getName(), node->getTotalCalls(),
                    static_cast<double>(node->getTotalTime()));
    }

    std::printf("timeline      %s\n", std::filesystem::absolute(workload.profileFile()).string().c_str());
    std::ifstream file(workload.profileFile());
    std::string line;
    for (int lines = 0; lines < 8 && std::getline(file, line); ++lines) {
        std::printf("              %s\n", line.c_str());
    }
}

void printPass(MediaJob::Pass const &pass)
{
    if (!pass.hasRun) {
        std::printf("%-13s not run: there is no streamer\n", pass.name);
        return;
    }
    double const loads = static_cast<double>(std::max<std::size_t>(1, pass.loads));
    std::printf("%-13s %zu loads, %" PRIu64 " bytes, %zu evictions, a load %.3f ms, the longest %.3f ms\n",
                pass.name, pass.loads, pass.bytes, pass.evictions, pass.msInAll / loads, pass.longestMs);
}

void printMedia(MediaJob const &media)
{
    std::printf("media         %zu files, %zu of them empty\n", media.files() + media.emptyFiles(),
                media.emptyFiles());
    for (MediaJob::Mounted const &mounted : media.mounted()) {
        std::printf("              %s, %zu of %zu files, %" PRIu64 " bytes, from %s\n", mounted.type.c_str(),
                    mounted.found, mounted.listed, mounted.bytes, mounted.path.c_str());
    }
    if (media.leftOut() > 0) {
        std::printf("              files left out: %zu, the log says why\n", media.leftOut());
    }
    for (MediaJob::Pass const &pass : media.passes()) {
        printPass(pass);
    }
    if (settings::budget <= 0) {
        std::printf("budget        none: at most %" PRIu64 " bytes at one time\n", media.peak());
    } else {
        std::printf("budget        %s: %d bytes, at most %" PRIu64 " at one time%s\n",
                    media.isBudgetKept() ? "kept" : "not kept", settings::budget.get(), media.peak(),
                    media.canKeepBudget() ? "" : "; a file is longer than it");
    }
    std::string const &list = media.places().list;
    std::printf("checksums     %zu compared with %s, %zu with nothing, %zu mistakes\n", media.compared(),
                list.empty() ? "what the disk and the zip file say" : list.c_str(), media.notCompared(),
                media.mistakes().size());
    constexpr std::size_t shown = 10;
    for (std::size_t i = 0; i < std::min(shown, media.mistakes().size()); ++i) {
        std::printf("              %s\n", media.mistakes()[i].c_str());
    }
}

void printPictures(Options const &options, Pictures const &pictures)
{
    std::printf("pictures      %zu read, %zu not\n", pictures.numRead(),
                pictures.all().size() - pictures.numRead());
    for (Pictures::Picture const &picture : pictures.all()) {
        if (!picture.trouble.empty()) {
            std::printf("              %-26s %s, %s\n", picture.name.c_str(), picture.kind.c_str(),
                        picture.trouble.c_str());
            continue;
        }
        std::printf("              %-26s %s, %u x %u, %d bits, %.3f ms\n", picture.name.c_str(),
                    picture.kind.c_str(), unsigned{picture.image.getWidth()},
                    unsigned{picture.image.getHeight()}, picture.bits, picture.ms);
    }
    if (!options.contactSheet.empty()) {
        std::printf("sheet         %s\n", std::filesystem::absolute(options.contactSheet).string().c_str());
    }
}

} // namespace

void printReport(Options const &options, Qel::Root &root, FrameClock const &clock, Workload &workload,
                 MediaJob const *media, Pictures const &pictures)
{
    Qel::BuildVersion const &version = root.getVersion();
    Qel::BuildDate const &built = root.getBuildDate();
    std::printf("qelSystem     %d.%d.%d build %d of %s, %s\n", version.major, version.minor, version.release,
                version.build, built.date, built.time);

    std::printf("plugins       %zu from %s\n", root.getPlugins().size(), options.pluginFile.c_str());
    for (Qel::Plugin const *plugin : root.getPlugins()) {
        std::printf("              %s\n", plugin->getName().c_str());
    }

    FrameTimes const times = clock.times();
    std::printf("frames        %d of %d asked for, %" PRIu64 " idle events, limit %d a second\n",
                clock.frames(), settings::frames.get(), clock.idleEvents(), settings::fps.get());
    std::printf("frame times   min %.3f ms, mean %.3f ms, 95th %.3f ms, max %.3f ms\n", times.shortest,
                times.mean, times.percentile95, times.longest);
    std::printf("rate          %.1f a second over %.2f s\n", times.mean > 0.0 ? 1000.0 / times.mean : 0.0,
                root.getTimeSinceInit().getSeconds());
    printMachine();
    printWork(workload);
    if (media != nullptr) {
        printMedia(*media);
    } else {
        std::printf("media         not run: there are none beside the program, or no plugins for them\n");
    }
    printPictures(options, pictures);
    printMemory();
    std::printf("log           %s\n", std::filesystem::absolute(options.logFile).string().c_str());
}
