#include "System/Time/profileManager.h"
#include "System/Time/timerInit.h"

#include <cstdio>

using namespace Qel;

namespace {

void moveThings()
{
    ProfileSample const sample("move");
}

void drawThings()
{
    ProfileSample const sample("draw");
    moveThings(); // a node of its own, below "draw"
}

void print(ProfileNode const *node, int indent)
{
    for (; node != nullptr; node = node->getSibling()) {
        std::printf("%*s%s: %u calls, %.1f ms\n", indent, "", node->getName(), node->getTotalCalls(),
                    static_cast<double>(node->getTotalTime()));
        print(node->getChild(), indent + 2);
    }
}

} // namespace

int main()
{
    TimerInit::init(TIMER_MILLISECONDS); // a host with a Root has this done already

    ProfileManager profiler; // profiles the thread that makes it
    profiler.reset();
    for (int frame = 0; frame < 3; ++frame) {
        moveThings();
        drawThings();
        profiler.increment_Frame_Counter();
    }
    print(profiler.getRoot()->getChild(), 0);
}
