#include "System/System/deprecationMgr.h"

#include "Tests/Tools/debugText.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace Qel {
namespace {

struct Deprecation : testing::Test {
    std::string report()
    {
        manager.reset();
        return debug.text();
    }

    test::DebugText debug;
    std::unique_ptr<DeprecationMgr> manager = std::make_unique<DeprecationMgr>();
};

std::string const stars = std::string(61, '*') + "\n";
std::string const head = stars + "WARNING. You are using the following deprecated functions:\n";

[[gnu::noinline]] bool oldOne()
{
    bool const first =
        DeprecationMgr::Instance().addDeprecatedFunction("oldOne", "newOne", __builtin_frame_address(0));
    asm volatile(""); // keeps this function on the stack during the call
    return first;
}

TEST_F(Deprecation, CountsThePlacesAndNotTheCalls)
{
    int const volatile calls = 3; // one place of call: no compiler may write the loop out
    for (int i = 0; i < calls; ++i) {
        EXPECT_EQ(oldOne(), i == 0);
    }
    EXPECT_FALSE(oldOne()) << "another place, but warned of already";
    EXPECT_EQ(report(),
              head + "* Function oldOne called from 2 different places.\n  Instead use newOne.\n" + stars);
}

TEST_F(Deprecation, TakesAnyFrameAndTellsNamesApartByPointer)
{
    static char const twice[] = "f\0f";
    void const *const frames[] = {nullptr, reinterpret_cast<void *>(8),
                                  reinterpret_cast<void *>(~std::uintptr_t{0}),
                                  reinterpret_cast<void *>(std::uintptr_t{0x8000000000000000u})};
    for (void const *frame : frames) {
        EXPECT_EQ(manager->addDeprecatedFunction(twice, "g", frame), frame == nullptr);
    }
    EXPECT_TRUE(manager->addDeprecatedFunction(twice + 2, "h", nullptr));

    std::string const function = "* Function f called from 1 different places.\n";
    EXPECT_EQ(report(), head + function + "  Instead use g.\n" + function + "  Instead use h.\n" + stars);
}

TEST_F(Deprecation, SaysNothingWhenThereIsNothingToSay)
{
    EXPECT_EQ(report(), "");
}

} // namespace
} // namespace Qel
