#include "System/Thread/mutex.h"
#include "System/Thread/signal.h"
#include "Tests/Tools/inThreads.h"
#include "Tests/Tools/waitUntil.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <thread>

#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qel;

namespace {

// What a process leaves in the shared folder under names of this test.
int leftovers()
{
    int count = 0;
    for (auto const &entry : std::filesystem::directory_iterator("/dev/shm")) {
        std::string const name = entry.path().filename().string();
        bool const ours = name.find("qel_20test") != std::string::npos;
        count += ours && name.ends_with(std::to_string(getpid())) ? 1 : 0;
    }
    return count;
}

// A name that no other run of this test uses. When it goes nothing may be left under it.
struct UniqueName : std::string {
    explicit UniqueName(char const *what)
        : std::string(std::string("qel test/") + what + '\\' + std::to_string(getpid()))
    {
    }
    ~UniqueName() { EXPECT_EQ(leftovers(), 0); }
};

// A child process; it ends by _exit, so that nothing of the test runs twice.
class Child {
public:
    template <class Body>
    explicit Child(Body body) : m_process(fork())
    {
        if (m_process == 0) {
            body();
            _exit(0);
        }
    }
    ~Child() { killAndWait(); }
    Child(Child const &) = delete;
    Child &operator=(Child const &) = delete;

    void killAndWait()
    {
        if (m_process > 0) {
            kill(m_process, SIGKILL);
            wait();
        }
    }
    int wait()
    {
        int status = 0;
        waitpid(m_process, &status, 0);
        m_process = -1;
        return status;
    }

private:
    pid_t m_process;
};

// A flag that a child and its parent see; it stays for the life of the process.
std::atomic<int> &sharedFlag()
{
    void *const page =
        mmap(nullptr, sizeof(std::atomic<int>), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return *static_cast<std::atomic<int> *>(page);
}

// A child that holds a lock, taken twice, until it is killed.
class Holder : public Child {
public:
    explicit Holder(std::string const &name, std::atomic<int> &held = sharedFlag())
        : Child([&] {
              cMutex mine(name.c_str());
              mine.on();
              mine.on();
              held = 1;
              pause();
          })
    {
        EXPECT_TRUE(test::waitUntil([&] { return held == 1; }));
    }
};

} // namespace

TEST(Mutex, IsTakenAgainByItsOwnerThroughAnyObjectOfItsName)
{
    UniqueName const name("again");
    cMutex first(name.c_str());
    auto second = std::make_unique<cMutex>(name.c_str());
    first.on();
    second->on();
    std::atomic<bool> entered{false};
    std::thread other([&] {
        cMutex third(name.c_str());
        cMutexHelper const guard(&third);
        entered = true;
    });
    second->off();
    second.reset();
    test::pause(5);
    EXPECT_FALSE(entered);
    first.off();
    other.join();
}

TEST(Mutex, WithoutANameIsALockOfItsOwn)
{
    cMutex first;
    cMutex second("");
    cMutexHelper const guard(&first);
    std::thread([&] { cMutexHelper const other(&second); }).join();
    cMutexHelper const nothing(nullptr);
}

TEST(Mutex, IsFreeAgainWhenItsOwnerIsKilled)
{
    UniqueName const name("killed");
    cMutex mutex(name.c_str());
    Holder child(name);

    std::atomic<bool> entered{false};
    std::thread waiter([&] {
        cMutexHelper const guard(&mutex);
        entered = true;
    });
    test::pause(5);
    EXPECT_FALSE(entered);
    child.killAndWait();
    waiter.join();

    // And it is an ordinary lock again.
    cMutexHelper const once(&mutex);
    cMutexHelper const twice(&mutex);
}

TEST(Mutex, WhatAKilledProcessLeftAloneBehindIsClearedByTheNextUser)
{
    UniqueName const name("left");
    Holder child(name);
    child.killAndWait();
    EXPECT_EQ(leftovers(), 1);
    cMutex mutex(name.c_str());
    cMutexHelper const guard(&mutex);
}

TEST(Signal, ReachesAnotherProcessByName)
{
    UniqueName there("there");
    UniqueName back("back");
    cSignal ping(there.data());
    cSignal pong(back.data());
    cMutex sameName(there.c_str()); // another object
    Child child([&] {
        cSignal hear(there.data());
        cSignal answer(back.data());
        for (int round = 0; round < 50; ++round) {
            hear.wait_signal();
            answer.signal();
        }
    });
    for (int round = 0; round < 50; ++round) {
        ping.signal();
        pong.wait_signal();
    }
    EXPECT_EQ(child.wait(), 0);
}

TEST(Signal, IsNotLostOnAWaiterThatIsKilled)
{
    UniqueName name("waiter");
    cSignal signal(name.data());
    std::atomic<int> &waiting = sharedFlag();
    Child child([&] {
        cSignal mine(name.data());
        waiting = 1;
        mine.wait_signal();
        _exit(1);
    });
    ASSERT_TRUE(test::waitUntil([&] { return waiting == 1; }));
    test::pause(5);
    child.killAndWait();
    std::thread waiter([&] { signal.wait_signal(); });
    signal.signal();
    waiter.join();
}

// Openers and closers meet; whoever holds the name shares one lock.
TEST(Mutex, IsOneLockForAllThatOpenAndCloseItAtOnce)
{
    UniqueName const name("crowd");
    std::atomic<int> inside{0};
    std::atomic<int> clashes{0};
    test::inThreads(3, [&](int) {
        for (int round = 0; round < 200; ++round) {
            cMutex mutex(name.c_str());
            cMutexHelper const guard(&mutex);
            clashes += inside.fetch_add(1) != 0 ? 1 : 0;
            --inside;
        }
    });
    EXPECT_EQ(clashes, 0);
}
