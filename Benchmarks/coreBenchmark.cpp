// The frame loop, and the log beside a bare write, stdio and spdlog.

#include "System/System/Root.h"
#include "System/System/logManager.h"

#include "Support/OS/clock.h"
#include "Support/OS/messagePump.h"

#include <benchmark/benchmark.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace {

// Costs nothing to read, so that what is measured is the loop.
class FreeClock final : public os::Clock {
public:
    std::uint32_t milliseconds() override { return ++m_now; }
    std::int64_t counter() override { return 1; }
    std::int64_t frequency() override { return 10'000'000; }
    void sleep(std::uint32_t) override {}
    os::LocalTime localTime() override { return {}; }

private:
    std::uint32_t m_now = 0;
};

// Ends the loop after a number of frames without being a listener.
class CountingPump final : public os::MessagePump {
public:
    bool peek(os::Message &, bool) override
    {
        if (--framesLeft < 0) {
            Qel::Root::Instance().endMessageLoop();
        }
        return false;
    }

    int framesLeft = 0;
};

class Listener final : public Qel::FrameListener {};

void BM_Root_frame(benchmark::State &state)
{
    constexpr int frames = 100'000;
    FreeClock clock;
    os::ClockScope const clockScope(clock);
    CountingPump pump;
    os::MessagePumpScope const pumpScope(pump);
    std::vector<Listener> listeners(static_cast<std::size_t>(state.range(0)));
    std::ofstream("bench_plugins.cfg");

    std::FILE *const quiet = std::freopen("/dev/null", "w", stderr);
    for (auto _ : state) {
        Qel::Root root("bench_plugins.cfg", "bench.log", false);
        for (Listener &listener : listeners) {
            root.addFrameListener(&listener);
        }
        pump.framesLeft = frames;
        auto const start = std::chrono::steady_clock::now();
        root.run();
        std::chrono::duration<double> const time = std::chrono::steady_clock::now() - start;
        state.SetIterationTime(time.count());
    }
    std::filesystem::remove("bench_plugins.cfg");
    benchmark::DoNotOptimize(quiet);
    state.SetItemsProcessed(state.iterations() * frames);
}
BENCHMARK(BM_Root_frame)->Arg(0)->Arg(10)->Arg(100)->UseManualTime();

std::string const message = "Qel resource: loaded textures/floor.tga, 262188 bytes\n";

void BM_Log_text(benchmark::State &state)
{
    Qel::Log log("bench.log", false, true);
    Qel::String const text(message);
    for (auto _ : state) {
        log.logMessage(text, 2);
    }
}
BENCHMARK(BM_Log_text);

void BM_Log_stampedText(benchmark::State &state)
{
    Qel::Log log("bench.log", false, true);
    Qel::String const text(message);
    for (auto _ : state) {
        log.logMessage(text, 4);
    }
}
BENCHMARK(BM_Log_stampedText);

void BM_Log_belowThreshold(benchmark::State &state)
{
    Qel::LogManager manager;
    manager.createLog("bench.log", true, false, true);
    for (auto _ : state) {
        manager.logMessage(1, "%s", message.c_str());
    }
}
BENCHMARK(BM_Log_belowThreshold);

void BM_Peer_bareWrite(benchmark::State &state)
{
    int const file = open("bench.log", O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0666);
    for (auto _ : state) {
        benchmark::DoNotOptimize(write(file, message.data(), message.size()));
    }
    close(file);
}
BENCHMARK(BM_Peer_bareWrite);

void BM_Peer_bareWriteOfAStampedText(benchmark::State &state)
{
    int const file = open("bench.log", O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0666);
    std::string const stamped = "09:05:07.042 - " + message;
    for (auto _ : state) {
        benchmark::DoNotOptimize(write(file, stamped.data(), stamped.size()));
    }
    close(file);
}
BENCHMARK(BM_Peer_bareWriteOfAStampedText);

void BM_Peer_stdioWithFlush(benchmark::State &state)
{
    std::FILE *const file = std::fopen("bench.log", "w");
    for (auto _ : state) {
        std::fwrite(message.data(), 1, message.size(), file);
        std::fflush(file);
    }
    std::fclose(file);
}
BENCHMARK(BM_Peer_stdioWithFlush);

void BM_Peer_spdlogWithFlush(benchmark::State &state)
{
    spdlog::logger logger("bench", std::make_shared<spdlog::sinks::basic_file_sink_st>("bench.log", true));
    logger.set_pattern("%v");
    logger.flush_on(spdlog::level::info);
    std::string_view const line(message.data(), message.size() - 1);
    for (auto _ : state) {
        logger.info(line);
    }
}
BENCHMARK(BM_Peer_spdlogWithFlush);

} // namespace
