#include "System/System/Root.h"
#include "System/System/exception.h"
#include "System/System/logManager.h"

#include <cstdio>

// Runs for three seconds of game time.
class Game final : public Qel::FrameListener {
public:
    bool frameStarted(Qel::FrameEvent const &event) override
    {
        m_seconds += event.sameEventTime;
        return m_seconds < 3.0f; // false ends the loop
    }

private:
    float m_seconds = 0.0f;
};

int main()
{
    try {
        Qel::Root root("plugins.cfg", "debug.log", true);
        Game game;
        root.addFrameListener(&game);
        root.setMaxFrameRate(100);
        root.run();
        Qel::logMessage(2, "%u notifications\n", root.getFrameCount());
        return 0;
    } catch (Qel::Exception const &exception) {
        std::fprintf(stderr, "%s\n", exception.description.c_str());
        return 1;
    }
}
