#include "Samples/Host/console.h"

#include "System/System/configurable.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace Qel {
namespace {

struct Console : testing::Test {
    Configurable<int> health{"con.player.health", 80};
    Configurable<float> height{"con.player.height", 1.75f};
    Configurable<bool> fly{"con.fly", false};
};

TEST_F(Console, ListsAndCompletes)
{
    using Lines = std::vector<std::string>;
    EXPECT_EQ(console::list("CON."),
              (Lines{"con.fly = 0", "con.player.health = 80", "con.player.height = 1.75"}));
    EXPECT_EQ(console::list("no such"), Lines());
    EXPECT_EQ(console::complete("con.player.h"), (Lines{"con.player.health", "con.player.height"}));
    EXPECT_EQ(console::complete("Con"), Lines());
    EXPECT_EQ(console::extend("con.p"), "con.player.he");
    EXPECT_EQ(console::extend("con.f"), "con.fly");
    EXPECT_EQ(console::extend("nothing"), "nothing");
}

TEST_F(Console, AnswersWhatIsTyped)
{
    std::pair<char const *, char const *> const rows[] = {
        {"", ""},
        {" con.fly ", "con.fly = 0"},
        {"con.fly=7", "con.fly = 1"},
        {"  con.player.health\t =  14 = 15 \n", "con.player.health = 14"},
        {"con.player.health=", "con.player.health = 0"},
        {"con.fly = On", "con.fly = 1"},
        {"con.fly false", "con.fly = 0"},
        {"con.player.height = 2.5e3", "con.player.height = 2500"},
        {"con.player.health nonsense", "con.player.health = 0"},
        {"list con.f", "con.fly = 0"},
        {"con.fl", "no variable 'con.fl'; did you mean 'con.fly'?"},
        {"list=3", "no variable 'list'"},
        {"=", "'=' is not name=value"},
    };
    for (auto const &[line, expected] : rows) {
        SCOPED_TRACE(line);
        EXPECT_EQ(console::answer(line), expected);
    }
}

} // namespace
} // namespace Qel
