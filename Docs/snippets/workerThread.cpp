#include "System/Thread/critical.h"
#include "System/Thread/threadTask.h"
#include "System/Thread/threaded.h"

#include <chrono>
#include <cstdio>
#include <thread>
#include <vector>

using namespace Qel;

// Collects readings in the background, about a hundred a second.
class Collector : public ThreadTask {
public:
    Collector() { setThreadSleep(10, false); }

    std::size_t count() const
    {
        cCriticalHelper const guard(&m_lock);
        return m_readings.size();
    }

private:
    bool process(float dt) override
    {
        cCriticalHelper const guard(&m_lock);
        m_readings.push_back(dt);
        return m_readings.size() < 100; // false ends the thread
    }

    cCritical m_lock;
    std::vector<float> m_readings;
};

int main()
{
    tThreaded<Collector> collector; // its thread begins here, with everything built
    std::this_thread::sleep_for(std::chrono::milliseconds(50)); // frames would run here
    std::printf("%zu readings\n", collector.count());
    // The object goes, and its thread stops first. waitThreadFinish() would stop it earlier.
}
