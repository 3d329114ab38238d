// When a worker's first step comes and its last one has gone: never on an object that is not whole.
#include "System/Thread/signal.h"
#include "System/Thread/thread.h"
#include "System/Thread/threadTask.h"
#include "System/Thread/threaded.h"
#include "Tests/Tools/waitUntil.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

using namespace Qel;

namespace {

constexpr int slowMs = 15;
constexpr int quickMs = 1; // for plain objects: far below their time of grace, also on a busy machine
constexpr unsigned int whole = 0x600D;

// What the steps of all objects found; plain data of the objects goes in only under their own threads.
struct Findings {
    std::atomic<int> steps{0};
    std::atomic<int> broken{0};
};

// Two levels that take their time at both ends. All the data are plain: the thread sanitizer sees any step
// that meets a constructor or a destructor.
template <class Base, int ms>
class SlowLevel : public Base {
public:
    SlowLevel()
    {
        test::pause(ms);
        m_text.assign(100, "built");
        m_mark = whole;
    }
    ~SlowLevel() override
    {
        m_mark = 0;
        m_text.clear();
        test::pause(ms);
    }
    bool isWhole() const { return m_mark == whole && m_text.size() == 100 && m_text[99] == "built"; }

private:
    unsigned int m_mark = 0;
    std::vector<std::string> m_text;
};

template <int ms>
class TaskBase : public SlowLevel<ThreadTask, ms> {
public:
    TaskBase() { this->setThreadSleep(0, false); }
    bool process(float) override { return false; } // replaced below; must never be the one that runs
};

template <int ms>
class TwoLevelTask : public SlowLevel<TaskBase<ms>, ms> {
public:
    explicit TwoLevelTask(Findings &findings) : m_findings(findings) {}
    bool process(float) override
    {
        ++m_findings.steps;
        m_findings.broken += this->isWhole() && TaskBase<ms>::isWhole() ? 0 : 1;
        return true;
    }

private:
    Findings &m_findings;
};

template <int ms>
class ThreadBase : public SlowLevel<iThread, ms> {
public:
    eThreadStatus runThread(float) override { return THREAD_DONE; }
};

template <int ms>
class TwoLevelThread : public SlowLevel<ThreadBase<ms>, ms> {
public:
    explicit TwoLevelThread(Findings &findings) : m_findings(findings) {}
    eThreadStatus runThread(float) override
    {
        ++m_findings.steps;
        m_findings.broken += this->isWhole() && ThreadBase<ms>::isWhole() ? 0 : 1;
        return THREAD_CONTINUE;
    }

private:
    Findings &m_findings;
};

using SlowTask = TwoLevelTask<slowMs>;
using SlowThread = TwoLevelThread<slowMs>;
using PlainTask = TwoLevelTask<quickMs>;
using PlainThread = TwoLevelThread<quickMs>;

// A plain class whose author keeps the two rules.
class CarefulTask : public PlainTask {
public:
    using PlainTask::PlainTask;
    ~CarefulTask() override { waitThreadFinish(); }
};

template <class Make>
void expectWholeAtEachStep(Make make)
{
    Findings findings;
    {
        auto const worker = make(findings);
        EXPECT_TRUE(test::waitUntil([&] { return findings.steps > 3; }));
    }
    EXPECT_EQ(findings.broken, 0);
}

} // namespace

TEST(Threaded, StepsOnlyBetweenTheLastConstructorAndTheFirstDestructor)
{
    expectWholeAtEachStep([](Findings &found) { return std::make_unique<tThreaded<SlowTask>>(found); });
    expectWholeAtEachStep([](Findings &found) { return std::make_unique<tThreaded<SlowThread>>(found); });
    expectWholeAtEachStep([](Findings &found) { return std::make_shared<tThreaded<SlowTask>>(found); });
    expectWholeAtEachStep([](Findings &found) { return tThreaded<SlowTask>(found); }); // on the stack
}

// Longer than a plain object would wait.
TEST(Threaded, NoGateOpensByTimeWhileConstructorsRun)
{
    struct Inner : ThreadTask {
        explicit Inner(std::atomic<int> &steps) : m_steps(steps) {}
        ~Inner() override { waitThreadFinish(); }
        bool process(float) override { return ++m_steps < 3; }
        std::atomic<int> &m_steps;
    };
    struct Outer : ThreadTask {
        Outer(std::atomic<int> &steps, std::atomic<int> &innerSteps) : m_steps(steps), m_inner(innerSteps)
        {
            test::pause(150);
            stepsWhileBuilding = steps + innerSteps;
        }
        bool process(float) override { return ++m_steps < 3; }
        std::atomic<int> &m_steps;
        Inner m_inner;
        int stepsWhileBuilding = 0;
    };
    std::atomic<int> steps{0};
    std::atomic<int> innerSteps{0};
    tThreaded<Outer> const outer(steps, innerSteps);
    EXPECT_EQ(outer.stepsWhileBuilding, 0);
    EXPECT_TRUE(test::waitUntil([&] { return steps == 3 && innerSteps == 3; })) << "a member steps by itself";
}

TEST(Threaded, AnObjectThatIsGoneAtOnceMakesNoBrokenStep)
{
    Findings findings;
    for (int round = 0; round < 3; ++round) {
        tThreaded<SlowTask> const task(findings);
        tThreaded<SlowThread> const thread(findings);
    }
    EXPECT_EQ(findings.broken, 0);
}

TEST(Threaded, AConstructorThatThrowsEndsTheThreadWithoutAStep)
{
    struct Throwing : PlainTask {
        explicit Throwing(Findings &found) : PlainTask(found) { throw std::runtime_error("no"); }
    };
    Findings findings;
    EXPECT_THROW(std::make_unique<tThreaded<Throwing>>(findings), std::runtime_error);
    EXPECT_THROW(std::make_unique<Throwing>(findings), std::runtime_error);
    EXPECT_EQ(findings.steps, 0);
}

TEST(Threaded, WakesAStepThatBlocksBeforeItWaitsForIt)
{
    class Blocking : public ThreadTask {
    public:
        bool process(float) override
        {
            m_signal.wait_signal();
            return true;
        }
        void wakeStep() { m_signal.signal(); }
        ~Blocking() override { EXPECT_TRUE(isThreadFinished()); }

    private:
        cSignal m_signal;
    };
    tThreaded<Blocking> const blocking;
    std::unique_ptr<ThreadTask> const onTheHeap = std::make_unique<tThreaded<Blocking>>();
    std::unique_ptr<ThreadTask> const orNothing(new (std::nothrow) tThreaded<Blocking>);
    test::pause(5);
}

TEST(ThreadTask, APlainObjectStepsWhenItIsAskedSomethingOrAfterItsTimeOfGrace)
{
    Findings findings;
    {
        CarefulTask asked(findings);
        EXPECT_FALSE(asked.isThreadFinished());
        EXPECT_TRUE(test::waitUntil([&] { return findings.steps > 3; }));
    }
    EXPECT_EQ(findings.broken, 0);

    class Untouched : public ThreadTask {
    public:
        explicit Untouched(std::atomic<int> &steps) : m_steps(steps) {}
        ~Untouched() override { waitThreadFinish(); }
        bool process(float) override { return ++m_steps < 3; }

    private:
        std::atomic<int> &m_steps;
    };
    std::atomic<int> steps{0};
    Untouched untouched(steps);
    untouched.setThreadSleep(1, false);
    EXPECT_TRUE(test::waitUntil([&] { return steps == 3; }));
}

// Constructors that together take longer than a plain object waits, one of them even by itself.
TEST(ThreadTask, APlainObjectWaitsForEachOfItsConstructorsAndThenStepsAsItsLastClass)
{
    struct SlowTaskBase : ThreadTask { // has no process()
        SlowTaskBase() { test::pause(150); }
    };
    struct LastTask : SlowTaskBase {
        LastTask(std::atomic<int> &stepsOf, std::atomic<int> &tooEarly) : steps(stepsOf), early(tooEarly)
        {
            test::pause(30);
            built = true;
            setThreadSleep(1, false);
        }
        ~LastTask() override { waitThreadFinish(); }
        bool process(float) override
        {
            early += built ? 0 : 1;
            return ++steps > 0;
        }
        std::atomic<int> &steps;
        std::atomic<int> &early;
        std::atomic<bool> built{false};
    };
    struct SlowThreadBase : iThread {
        SlowThreadBase() { test::pause(150); }
    };
    struct LastThread : SlowThreadBase {
        explicit LastThread(std::atomic<int> &stepsOf) : steps(stepsOf) { setThreadSleep(1); }
        ~LastThread() override { _endSteps(); }
        eThreadStatus runThread(float) override { return ++steps < 3 ? THREAD_CONTINUE : THREAD_DONE; }
        std::atomic<int> &steps;
    };
    std::atomic<int> taskSteps{0};
    std::atomic<int> early{0};
    std::atomic<int> threadSteps{0};
    {
        LastTask const task(taskSteps, early);
        LastThread const thread(threadSteps);
        EXPECT_TRUE(test::waitUntil([&] { return taskSteps > 3 && threadSteps == 3; }));
    }
    EXPECT_EQ(early, 0);
}

TEST(ThreadTask, DeleteStopsTheThreadOfAPlainObjectBeforeItsDestructors)
{
    Findings findings;
    {
        std::unique_ptr<ThreadTask> const task = std::make_unique<PlainTask>(findings);
        EXPECT_FALSE(task->isThreadFinished());
        std::unique_ptr<iThread> const thread = std::make_unique<PlainThread>(findings);
        thread->getThreadLoad(1.0f);
        EXPECT_TRUE(test::waitUntil([&] { return findings.steps > 6; }));
    }
    EXPECT_EQ(findings.broken, 0);
}

// The block of an object goes back as a whole, wherever the worker lies in it.
TEST(ThreadTask, DeleteGivesBackObjectsOfAnyLayout)
{
    struct Other {
        virtual ~Other() = default;
        std::vector<int> data = std::vector<int>(10);
    };
    // Where the compiler sees through to a worker that is not the first base, it takes the address that
    // `delete` hands on for that of the block, and warns.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wfree-nonheap-object"
    struct Second : Other, ThreadTask {
        bool process(float) override { return true; }
    };
#pragma GCC diagnostic pop
    struct alignas(256) Aligned : ThreadTask {
        bool process(float) override { return true; }
        std::vector<int> data = std::vector<int>(10);
    };
    std::unique_ptr<ThreadTask> second = std::make_unique<Second>();
    std::unique_ptr<ThreadTask> aligned = std::make_unique<Aligned>();
    std::unique_ptr<ThreadTask> alignedAndThreaded = std::make_unique<tThreaded<Aligned>>();
    std::unique_ptr<Other> throughTheOther = std::make_unique<Second>();
}

// A class in the old style: its destructor is what ends the step that `delete` waits for.
TEST(ThreadTask, DeleteGivesWayToADestructorThatWakesTheStep)
{
    class Blocking : public ThreadTask {
    public:
        ~Blocking() override
        {
            m_signal.signal();
            waitThreadFinish();
        }
        bool process(float) override
        {
            m_entered = true;
            m_signal.wait_signal();
            return true;
        }
        std::atomic<bool> m_entered{false};

    private:
        cSignal m_signal;
    };
    auto blocking = std::make_unique<Blocking>();
    EXPECT_FALSE(blocking->isThreadFinished());
    ASSERT_TRUE(test::waitUntil([&] { return blocking->m_entered.load(); }));
    blocking.reset();
}
