#include "System/Time/multiFrameProfiler.h"

#include <thread>

using namespace Qel;

int main()
{
    cMultiFrameProfiler::capture("frames.txt", 2); // the next two frames

    for (int frame = 0; frame < 2; ++frame) {
        cMultiFrameProfiler::beginFrame();
        std::thread loader([] {
            cMultiFrameProfiler::beginEvent(0, "load");
            cMultiFrameProfiler::endEvent("load");
        });
        cMultiFrameProfiler::beginEvent(0, "physics");
        cMultiFrameProfiler::beginEvent(0, "solve");
        cMultiFrameProfiler::endEvent("solve");
        cMultiFrameProfiler::endEvent("physics");
        loader.join();
        cMultiFrameProfiler::endFrame(); // the second one writes the file
    }
}
