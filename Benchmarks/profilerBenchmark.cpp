// The counters and profilers beside the bare clock that they read.
#include "System/Thread/cpuBinding.h"
#include "System/Time/multiFrameProfiler.h"
#include "System/Time/perfCounter.h"
#include "System/Time/profileManager.h"
#include "System/Time/timerInit.h"

#include <benchmark/benchmark.h>

#include <ctime>

using namespace Qel;

namespace {

void BM_ClockGettime(benchmark::State &state)
{
    for (auto _ : state) {
        timespec now{};
        clock_gettime(CLOCK_MONOTONIC, &now);
        benchmark::DoNotOptimize(now);
    }
}
BENCHMARK(BM_ClockGettime);

void BM_PerfCounter_getTickCounterBound(benchmark::State &state)
{
    cCpuBinding::init(true);
    for (auto _ : state) {
        benchmark::DoNotOptimize(PerfCounter::getTickCounter());
    }
    cCpuBinding::disable();
    cCpuBinding::deinit();
}
BENCHMARK(BM_PerfCounter_getTickCounterBound);

void BM_ProfileSample_scope(benchmark::State &state)
{
    TimerInit::init(TIMER_MILLISECONDS);
    ProfileManager manager;
    static char const name[] = "scope";
    for (auto _ : state) {
        ProfileSample const sample(name);
    }
}
BENCHMARK(BM_ProfileSample_scope);

void BM_ProfileSample_withoutManager(benchmark::State &state)
{
    for (auto _ : state) {
        ProfileSample const sample("scope");
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_ProfileSample_withoutManager);

// As many pairs as fit into the table, again and again.
void BM_MultiFrameProfiler_event(benchmark::State &state)
{
    constexpr int pairs = 100'000;
    int recorded = pairs;
    for (auto _ : state) {
        if (recorded == pairs) {
            state.PauseTiming();
            cMultiFrameProfiler::endFrame();
            cMultiFrameProfiler::capture("/dev/null", 1);
            cMultiFrameProfiler::beginFrame();
            recorded = 0;
            state.ResumeTiming();
        }
        ++recorded;
        cMultiFrameProfiler::beginEvent(0, "event");
        cMultiFrameProfiler::endEvent("event");
    }
    cMultiFrameProfiler::endFrame();
    state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(BM_MultiFrameProfiler_event);

void BM_MultiFrameProfiler_eventWithoutCapture(benchmark::State &state)
{
    for (auto _ : state) {
        cMultiFrameProfiler::beginEvent(0, "event");
        cMultiFrameProfiler::endEvent("event");
    }
    state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(BM_MultiFrameProfiler_eventWithoutCapture);

void BM_MultiFrameProfiler_report(benchmark::State &state)
{
    for (auto _ : state) {
        state.PauseTiming();
        cMultiFrameProfiler::capture("/dev/null", 1);
        cMultiFrameProfiler::beginFrame();
        for (int index = 0; index < 62'000; ++index) {
            cMultiFrameProfiler::beginEvent(0, "outer");
            cMultiFrameProfiler::beginEvent(0, "inner");
            cMultiFrameProfiler::endEvent("inner");
            cMultiFrameProfiler::endEvent("outer");
        }
        state.ResumeTiming();
        cMultiFrameProfiler::endFrame();
    }
}
BENCHMARK(BM_MultiFrameProfiler_report)->Unit(benchmark::kMillisecond);

} // namespace
