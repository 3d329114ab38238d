#include "System/Thread/queuedTaskMgr.h"

#include <cstdio>
#include <vector>

using namespace Qel;

// Squares a list of numbers, a thousand at a step.
class Square : public iQueuedTask {
public:
    explicit Square(std::vector<float> &numbers) : m_numbers(numbers) {}

    eThreadStatus execute(bool forced) override
    {
        do {
            for (int left = 1000; left > 0 && m_next < m_numbers.size(); --left, ++m_next) {
                m_numbers[m_next] *= m_numbers[m_next];
            }
        } while (forced && m_next < m_numbers.size()); // whoever forces a task wants all of it
        return m_next < m_numbers.size() ? THREAD_CONTINUE : THREAD_DONE;
    }

private:
    std::vector<float> &m_numbers;
    std::size_t m_next = 0;
};

int main()
{
    std::vector<float> first(50'000, 2.0f);
    std::vector<float> second(50'000, 3.0f);

    QueuedTaskMgr pool(2, THREAD_PRIO_LOW, 32768, 0);
    Square squareFirst(first);
    Square squareSecond(second);
    pool.addTask(&squareFirst, PRIORITY_MIDDLE);
    pool.addTask(&squareSecond, PRIORITY_MOST_URGENT); // the queue's front, if no worker is idle

    // Here frames would run. A task must have ended before it goes.
    squareSecond.finish(); // runs it on this thread if no worker has begun it
    squareFirst.finish();
    std::printf("%g %g\n", static_cast<double>(first.back()), static_cast<double>(second.back()));
}
