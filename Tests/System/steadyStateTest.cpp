#include "System/System/Root.h"

#include "Tests/Tools/steeredClock.h"
#include "Tests/Tools/tempFolder.h"

#include "Support/OS/messagePump.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

// Counts what the whole program takes from the global allocator, the library included. Not inline, or the
// compiler takes the pair apart and finds malloc beside delete.
namespace {
std::atomic<std::size_t> allocations{0};
}

__attribute__((noinline)) void *operator new(std::size_t size)
{
    ++allocations;
    if (void *const block = std::malloc(size)) {
        return block;
    }
    throw std::bad_alloc();
}

__attribute__((noinline)) void *operator new(std::size_t size, std::nothrow_t const &) noexcept
{
    ++allocations;
    return std::malloc(size);
}

__attribute__((noinline)) void operator delete(void *block) noexcept
{
    std::free(block);
}

__attribute__((noinline)) void operator delete(void *block, std::size_t) noexcept
{
    std::free(block);
}

namespace Qel {
namespace {

// Lets 1000 frames pass, then notes the count, and ends the loop after 1000 more.
class CountingPump final : public os::MessagePump {
public:
    bool peek(os::Message &, bool) override
    {
        ++peeks;
        if (peeks == 1000) {
            before = allocations;
        } else if (peeks == 2000) {
            after = allocations;
            Root::Instance().endMessageLoop();
        }
        return false;
    }

    int peeks = 0;
    std::size_t before = 0;
    std::size_t after = 0;
};

TEST(RootSteadyState, FramesAllocateNothing)
{
    test::TempFolder const folder;
    test::writeFile("plugins.cfg", "");
    test::SteeredClock clock; // a millisecond goes by with each stamp
    clock.ticksPerMillisecondRead = 10'000;
    CountingPump pump;
    os::MessagePumpScope const scope(pump);
    testing::internal::CaptureStderr();
    {
        Root root("plugins.cfg", "a.log", false);
        root.run();
    }
    testing::internal::GetCapturedStderr();
    EXPECT_GT(pump.before, 0u) << "the count counts";
    EXPECT_EQ(pump.after, pump.before);
}

} // namespace
} // namespace Qel
