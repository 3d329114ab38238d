#include "System/Sound/movieManager.h"
#include "System/Sound/soundSystemManager.h"
#include "Tests/Tools/logLines.h"
#include "Tests/Tools/testSound.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>

namespace Qel {
namespace {

struct NamedSound : test::TestSound {
    NamedSound(String const &title, String const &type)
    {
        name = title;
        factoryName = type;
    }
};

struct SoundFactory : SoundSystemFactory {
    explicit SoundFactory(char const *typeName) : type(typeName) {}
    String getType() const override { return type; }
    iSoundSystem *createInstance(String const &name) override
    {
        ++made;
        return std::make_unique<NamedSound>(name, type).release();
    }
    String type;
    int made = 0;
};

TEST(SoundSystemManager, MakesEachNameOnceByItsType)
{
    test::LogLines log(2);
    SoundFactory first("TEST");
    SoundFactory second("TEST");
    SoundSystemManager manager;
    manager.addSoundSystemFactory(&first);
    EXPECT_EQ(log.take(), "SoundSystemFactory type 'TEST' registered.\n");
    manager.addSoundSystemFactory(&second);
    iSoundSystem *const system = manager.load("Main", "TEST", PRIORITY_MIDDLE);
    ASSERT_NE(system, nullptr);
    EXPECT_EQ(manager.load("Main", "nothing", PRIORITY_MIDDLE), system) << "the type is not looked at";
    EXPECT_TRUE(first.made == 1 && second.made == 0) << "a type keeps its first factory";
    log.take();
    EXPECT_EQ(manager.load("other", "nothing", PRIORITY_MIDDLE), nullptr);
    EXPECT_EQ(log.take(), "SoundSystemFactory type 'nothing' Unknown!\n");
    manager.unload(system);
    EXPECT_NE(manager.load("Main", "TEST", PRIORITY_MIDDLE), nullptr);
    EXPECT_EQ(first.made, 2);
}

struct Player final : iMovie {
    Player(String const &title, String const &type) : iMovie(title, type) {}
    std::array<bool, 4> states() const { return {state1, state2, state4, state5}; }
    char more[64] = {}; // than an iMovie has
};

struct PlayerFactory : MovieFactory {
    String getType() const override { return "PLAYER"; }
    iMovie *createInstance(String const &name) override
    {
        return std::make_unique<Player>(name, "PLAYER").release();
    }
};

TEST(MovieManager, MakesAndDestroysPlayersByType)
{
    test::LogLines log(2);
    PlayerFactory factory;
    MovieManager manager;
    manager.addMovieFactory(&factory);
    EXPECT_EQ(log.take(), "MovieFactory type PLAYER registered.\n");
    EXPECT_EQ(manager.create("a", "other"), nullptr);
    EXPECT_EQ(log.take(), "MovieFactory type other Unknown!\n");
    manager.destroy(nullptr);
    auto *const player = static_cast<Player *>(manager.create("a", "PLAYER"));
    ASSERT_NE(player, nullptr);
    EXPECT_EQ(player->states(), (std::array{false, true, true, true}));
    player->setMovieState(MOVIESTATE_1, 7);
    player->setMovieState(static_cast<eMovieState>(3), 1);
    player->setMovieState(MOVIESTATE_4, 0);
    EXPECT_EQ(player->states(), (std::array{true, true, false, true}));
    manager.destroy(player);
}

} // namespace
} // namespace Qel
