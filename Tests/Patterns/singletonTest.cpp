#include "System/Patterns/tSingleton.h"
#include "System/System/deprecationMgr.h"

#include <gtest/gtest.h>

#include <memory>

namespace Qel {
namespace {

struct Padding {
    virtual ~Padding() = default;
    int number = 7;
};

// The template's part stands behind another base.
struct Manager : Padding, tSingleton<Manager> {};

TEST(TSingleton, GivesTheWholeObjectTheNewestOneAndNoneAfterwards)
{
    EXPECT_FALSE(tSingleton<Manager>::InstanceActive());
    auto first = std::make_unique<Manager>();
    EXPECT_EQ(Manager::InstancePtr(), first.get());
    EXPECT_EQ(Manager::Instance().number, 7);

    auto second = std::make_unique<Manager>();
    EXPECT_EQ(Manager::InstancePtr(), second.get());
    *first = *second;
    EXPECT_EQ(Manager::InstancePtr(), second.get()) << "assignment leaves the instance alone";

    first.reset();
    EXPECT_FALSE(Manager::InstanceActive()) << "any destructor clears it";
}

TEST(TSingleton, OfTheLibraryIsTheSameOneHere)
{
    EXPECT_EQ(DeprecationMgr::InstancePtr(), nullptr);
    DeprecationMgr manager; // its constructor is the library's, the accessor may be this program's
    EXPECT_EQ(DeprecationMgr::InstancePtr(), &manager);
}

} // namespace
} // namespace Qel
