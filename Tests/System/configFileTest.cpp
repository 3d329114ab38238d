#include "System/System/configFile.h"

#include "System/System/exception.h"
#include "Tests/Tools/tempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <tuple>

namespace Qel {
namespace {

struct ConfigFiles : testing::Test {
    // All settings as "<key|value>" in order.
    static std::string all(ConfigFile &config)
    {
        std::string text;
        for (auto it = config.getSettingsIterator(); it.hasMore(); it.next()) {
            text.append("<").append(it.key()).append("|").append(it.value()).append(">");
        }
        return text;
    }

    test::TempFolder const folder;
    String const path = "a.cfg";
};

TEST_F(ConfigFiles, ReadsALineAtATimeInPiecesOf99Characters)
{
    std::string const blanks(92, ' ');
    std::tuple<char const *, std::string, std::string> const rows[] = {
        {"separator again in the value", "a=b=c\n", "<a|b=c>"},
        {"another separator first", "a:b=c\n", "<a|b=c>"},
        {"blanks around", " \t key \t = \t value \t \n", "<key|value>"},
        {"blanks inside", "my key=my value\n", "<my key|my value>"},
        {"carriage returns", "a=b\r\n\r\nc=\r\nd=e \r\n", "<a|b><d|e>"},
        {"comments at the start of a line only", "#a=b\n@c=d\n  #e=f\ng=#h\n", "<g|#h>"},
        {"no key or no value", "key=\n=value\n =value\nkey\n\n", ""},
        {"a value of blanks is there, and empty", "key= \n", "<key|>"},
        {"order by key, and as in the file within a key", "b=2\na=z\na=y\na=x\n", "<a|z><a|y><a|x><b|2>"},
        {"98 characters and the newline", "key=" + std::string(94, 'v') + "\n",
         "<key|" + std::string(94, 'v') + ">"},
        {"99 characters, and a newline of its own", "key=" + std::string(95, 'v') + "\n", ""},
        {"150 characters: the second piece counts by itself",
         "a=" + std::string(97, 'v') + "second=" + std::string(43, 'w') + "\n",
         "<second|" + std::string(43, 'w') + ">"},
        {"carriage returns do not count as characters", "key=x" + blanks + "v\r\n", "<key|x" + blanks + "v>"},
        {"a zero byte hides the rest of its line", std::string("a=b\0\nc\0=d\ne=f\n", 14), "<e|f>"},
        {"nothing but zero bytes", std::string(1000, '\0'), ""},
    };

    for (auto const &[what, text, settings] : rows) {
        SCOPED_TRACE(what);
        test::writeFile("a.cfg", text);
        ConfigFile config;
        config.load(path, "=:");
        EXPECT_EQ(all(config), settings);
    }
}

TEST_F(ConfigFiles, GivesTheFirstValueOrAllOfThem)
{
    test::writeFile("a.cfg", "Plugin=one\nPlugin=two\nOther=x\nPlugin=three\n");
    ConfigFile config;
    config.load(path, "=");
    EXPECT_EQ(config.getSetting("Plugin"), "one");
    EXPECT_EQ(config.getSetting("plugin"), "") << "keys are told apart by case";
    EXPECT_EQ(config.getMultiSetting("Plugin"), (StringVector{"one", "two", "three"}));
    EXPECT_TRUE(config.getMultiSetting("Plug").empty());
}

TEST_F(ConfigFiles, WritesBackWhatItLoadsAgain)
{
    test::writeFile("a.cfg", "# gone\nb:two words\na:1\na:2\n");
    ConfigFile config;
    config.load(path, ":");
    config.setSetting("a", "first");
    config.setSetting("c", 4294967295u);
    config.setSetting("d", 7u);
    config.save();
    EXPECT_EQ(test::readFile("a.cfg"), "a = first\na = 2\nb = two words\nc = -1\nd = 7\n");

    ConfigFile again;
    again.load(path, "=");
    EXPECT_EQ(all(again), all(config));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator("."), {}), 1) << "nothing is left aside";
}

TEST_F(ConfigFiles, ThrowsForAMissingFileAndForAFolderAndIsEmptyThen)
{
    test::writeFile("a.cfg", "a=b\n");
    ConfigFile config;
    for (String const &missing : {String("none.cfg"), String(".")}) {
        SCOPED_TRACE(missing);
        config.load(path, "=");
        try {
            config.load(missing, "=");
            ADD_FAILURE() << "nothing thrown";
        } catch (Exception const &failure) {
            EXPECT_EQ(failure.getNumber(), 8);
            EXPECT_EQ(failure.description, "'" + missing + "' file not found!");
            EXPECT_EQ(failure.source, "ConfigFile::load");
        }
        EXPECT_EQ(all(config), "");
    }

    ConfigFile().save(); // no name: nothing to write to
    config.save();       // the name of a folder
}

TEST_F(ConfigFiles, PassesOverALineOf100Megabytes)
{
    test::writeFile("a.cfg", std::string(100 << 20, '=') + "\na=b\n");
    ConfigFile config;
    config.load(path, "=");
    EXPECT_EQ(all(config), "<a|b>");
}

} // namespace
} // namespace Qel
